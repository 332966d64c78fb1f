// The clocks by which the engine would count a script's time (processor_clock.cpp).
#pragma once

namespace zelto::script {

// The engine's watchdog has read them and calls ours: the next reading is nobody's but ours.
void end_engine_reading() noexcept;

}  // namespace zelto::script
