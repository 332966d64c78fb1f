// The clocks by which the engine's watchdog counts a script's time, as it is told them (engine_clock.cpp). Each thread
// has one engine.
#pragma once

#include <chrono>

namespace zelto::script {

// So long the watchdog waits from here on before it looks at the script.
void set_engine_timer(std::chrono::nanoseconds length) noexcept;
// The outermost script is about to begin.
void begin_engine_run() noexcept;
// The watchdog has read the clocks and calls ours: the next reading is nobody's but ours.
void end_engine_reading() noexcept;

}  // namespace zelto::script
