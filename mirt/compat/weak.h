// How a fallback is defined.
//
// A fallback has the name, linkage and visibility that the SDK declares, and is weak: a function of that
// name which the host process exports is used instead. Calls to it, those from this component included,
// must therefore go through the symbol table; nothing in the build may bind them early.
#pragma once

#define MIRT_WEAK __attribute__((weak))
