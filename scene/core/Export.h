// What a shared library shows of itself: only what is marked.
#pragma once

// Marks the classes, whose exceptions must be known on both sides, and the functions that programs may use.
// All else is hidden, which lets the compiler treat it as it does the code of a program.
#define VRN_API __attribute__((visibility("default")))
