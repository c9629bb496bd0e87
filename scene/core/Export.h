// Symbol visibility of the shared library, which is compiled with -fvisibility=hidden.
#pragma once

// Marks public functions, and classes whose type information both sides need (exceptions, virtual functions). All other
// symbols are hidden, so that calls between them are direct and can be inlined.
#define VRN_API __attribute__((visibility("default")))
