// The modem outside its diagnostic mode: in its boot ROM, or running a programmer that a host has
// loaded.
#pragma once

#include <optional>
#include <string>

#include "simulator/download/boot_rom.h"
#include "simulator/download/programmer.h"

namespace sim {

enum class Mode { DIAGNOSTIC, BOOT_ROM, PROGRAMMER };

class DownloadMode {
 public:
  // The answer to a packet of this mode; empty when there is none.
  Bytes answer(Mode mode, View packet);

  // A refusal in place of an answer: a NAK, or the programmer's error packet.
  Bytes refuse(Mode mode, int reason);

  // The modem's last answer: a lone flag asks for it again.
  const Bytes& last_answer() const { return last_answer_; }

  // The mode that the last packet switches to, if it does.
  std::optional<Mode> leads_to(Mode mode) const;

  BootRom rom;
  Programmer programmer;

 private:
  Bytes last_answer_;
};

// Name of a packet, for traces and fault switches.
std::string packet_name(Mode mode, View packet);

// Every packet as "boot-rom 0f -- NAME", or "programmer ...".
std::vector<std::string> describe_packets();
bool is_packet_name(const std::string& name);

// A version like "Q71XEB22.001" in a firmware image; empty when it holds none.
std::string version_in(View image);

}  // namespace sim
