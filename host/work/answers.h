// The lines that a worker sends to its supervisor:
//   r JSON   the result of a row
//   n TEXT   what the row is at now
//   g JSON   something seen of the machine
//   v TEXT   the version of the plug-in
//   f TEXT   why this worker can do nothing at all
// Besides them stand those that its signal handlers send.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace host {

class Answers {
 public:
  explicit Answers(int pipe) : pipe_(pipe) {}
  void send(char kind, std::string text) const;
  void send(char kind, const nlohmann::json& json) const;

 private:
  int pipe_;
};

}  // namespace host
