#include "app/big_stack.h"

#include <pthread.h>

#include <exception>
#include <system_error>

namespace zelto {

namespace {

struct Job {
  const std::function<void()>* body;
  std::exception_ptr thrown;
};

void* run(void* argument) {
  auto* job = static_cast<Job*>(argument);
  try {
    (*job->body)();
  } catch (...) {
    job->thrown = std::current_exception();
  }
  return nullptr;
}

}  // namespace

void on_big_stack(const std::function<void()>& body) {
  Job job{&body, nullptr};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kPageStack);
  pthread_t thread{};
  const int failed = pthread_create(&thread, &attributes, &run, &job);
  pthread_attr_destroy(&attributes);
  if (failed != 0) throw std::system_error(failed, std::generic_category(), "no thread for the page");
  pthread_join(thread, nullptr);
  if (job.thrown) std::rethrow_exception(job.thrown);
}

}  // namespace zelto
