// Commands of the tester that run when a request arrives, to act at an exact point of a session:
// kill a host, unplug a hub.
//
// Textual form: REQUEST[,skip=N]:COMMAND, for example "stream_write,skip=5:kill -9 $(cat pid)".
#pragma once

#include <string>
#include <vector>

namespace sim {

struct RequestCommand {
  std::string request;  // name of a request or packet
  int skip;             // so many of them are left alone first
  std::string command;  // for sh, with SIM_REQUEST in its environment
};

// A command from its textual form. Throws std::invalid_argument with the reason.
RequestCommand parse_request_command(const std::string& text);

class RequestCommands {
 public:
  explicit RequestCommands(std::vector<RequestCommand> commands) : commands_(std::move(commands)) {}

  // Runs what is due at this request and waits for its end. Each command runs once.
  void run(const std::string& request);

 private:
  std::vector<RequestCommand> commands_;  // with what is left to skip, negative after the run
};

}  // namespace sim
