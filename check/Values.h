// Checks a value by itself: its type, its range, and the list of the strings expected.
#pragma once

#include "check/Declared.h"
#include "check/Findings.h"

namespace vrn::check {

// The catalogue determines the types of the inputs that it creates. Others have the type that the text gives them.
void checkType(const Declared& declared, Findings& findings);

// Reports the first number that is out of range. Linear in the numbers if there is a range.
void checkRange(const Declared& declared, Findings& findings);

void checkListed(const Declared& declared, Findings& findings);

} // namespace vrn::check
