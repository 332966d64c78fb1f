// Plain calls of the driver manager, whose headers define the base types otherwise than the SDK does.
#pragma once

#include <string>

class DriverManager {
 public:
  DriverManager();
  ~DriverManager();
  DriverManager(const DriverManager&) = delete;
  DriverManager& operator=(const DriverManager&) = delete;

  // As a program without a pool of its own does it: connects, runs the statement, fetches a row, disconnects.
  bool connect_and_run(std::string connection_string, std::string sql) const;

 private:
  void* environment_ = nullptr;
};
