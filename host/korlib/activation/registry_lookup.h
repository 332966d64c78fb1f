// What the registry store says about classes.
#pragma once

#include <filesystem>

#include <korlib/activation.h>

namespace korlib::activation {

bool find_registered_prog_id(const wchar_t* prog_id, CLSID* clsid);

// The module that a class is registered to; empty when it is not.
std::filesystem::path find_registered_module(REFCLSID clsid);

}  // namespace korlib::activation
