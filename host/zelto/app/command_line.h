// The whole program: what its command line may ask for, and what it answers.
#pragma once

#include <stdexcept>

namespace zelto {

// Exit codes, as zelto --help tells them.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kWrongUse = 2;
inline constexpr int kLeftOver = 3;  // after serving, some object was still alive

// The command line or zelto.toml asks for what cannot be: ends the program with kWrongUse.
struct WrongUse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

int run_command_line(int argc, const char* const* argv);

}  // namespace zelto
