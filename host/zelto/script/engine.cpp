#include "script/engine.h"

#include "script/engine_state.h"
#include "script/realm_state.h"
#include "script/script_object.h"

namespace zelto::script {
namespace {

thread_local Engine* t_engine = nullptr;

}  // namespace

Engine::Engine() : state_(std::make_unique<EngineState>()), previous_(t_engine) { t_engine = this; }

Engine::~Engine() { t_engine = previous_; }

Engine* Engine::current() noexcept { return t_engine; }

void Engine::set_time_limit(std::chrono::milliseconds limit) { state_->set_time_limit(limit); }

void Engine::set_memory_limit(std::size_t bytes) { state_->set_memory_limit(bytes); }

std::chrono::milliseconds Engine::time_limit() const noexcept { return state_->time_limit(); }

Realm::Realm(Engine& engine) : state_(std::make_unique<RealmState>(engine.state())) {}

Realm::~Realm() = default;

void Realm::set_object(std::wstring_view name, IDispatch* object) { state_->set_object(name, object); }

void Realm::set_output(IDispatch* response) { state_->set_output(response); }

void Realm::set_log(LogSink sink) { state_->set_log(std::move(sink)); }

Outcome Realm::run(const std::shared_ptr<const language::Program>& program) { return state_->run(program); }

Outcome Realm::call(std::wstring_view function) { return state_->call(function); }

IDispatch* Realm::global() { return state_->unwrap(state_->global_object()).detach(); }

bool is_script_object(IUnknown* object) noexcept { return script_object_behind(object) != nullptr; }

}  // namespace zelto::script
