// What the module's root tells the entry points: the classes that a host can ask for.
#pragma once

#include <span>

#include <korlib/unknown.h>

struct ClassEntry {
  const CLSID* clsid;
  const wchar_t* name;  // the bare name, for a host without a registry
  IClassFactory* object;
};

// The creatable classes in the order in which they are searched; an empty name asks for the first.
// Defined in module.cpp.
std::span<const ClassEntry> class_table();
