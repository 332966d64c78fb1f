// The signal by which the engine stops its threads.
#pragma once

namespace zelto::script {

// To look at the stacks of the program's threads, the engine sends them a signal. Its handler takes any that comes for
// one of these, and would end the program over one from elsewhere.
// The engine's own choice, SIGUSR1, is what others send to have a program do something; nothing sends this one. A
// real-time signal would not do: sending it fails where the limit of those that wait is low.
int engine_signal();

// Has the engine use it. Called before anything else of the engine is.
void choose_engine_signal();

// From here on the engine's handler gets none from elsewhere. Called once there is an engine.
void guard_engine_signal();

}  // namespace zelto::script
