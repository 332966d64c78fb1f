// The modules that are open.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>

#include "activation/module.h"

namespace korlib::activation {

// The module of that file, opened if need be. It stays open at least while the caller holds it.
HRESULT get_module(const std::filesystem::path& file, std::shared_ptr<Module>* module);

// Closes every module that nobody holds and that agrees.
void close_unused_modules();

}  // namespace korlib::activation
