// The simulated modem without its input and output: bytes and times go in, bytes and
// times come out. The program runs it on a terminal in real time, tests run it in virtual time.
#pragma once

#include <deque>
#include <functional>
#include <optional>

#include "simulator/download/download_mode.h"
#include "simulator/damage.h"
#include "simulator/line/frame.h"
#include "simulator/scenario/faults.h"
#include "simulator/scenario/scenario.h"

namespace sim {

class Modem {
 public:
  using Trace = std::function<void(const std::string&)>;
  explicit Modem(Scenario scenario, unsigned seed = 1, Trace trace = {});

  // Called with the name of each request and packet that has arrived, before the modem acts on it.
  std::function<void(const std::string&)> on_request;

  // Bytes from the host.
  void receive(View bytes, Time now);

  // Runs the scenario's time line up to now.
  void advance(Time now);

  // Takes the device away with its power, and brings it back as one that has just been switched on.
  void unplug(Time now);
  void replug(Time now);

  // When the modem next does something by itself.
  std::optional<Time> next_due() const;

  // Its next action, if it is due by now.
  std::optional<Output> take_output(Time now);

  Model& model() { return model_; }
  DownloadMode& download() { return download_; }
  Mode mode() const { return mode_; }
  Faults& faults() { return faults_; }
  bool is_gone() const { return gone_; }

 private:
  void answer(View request, Time now);
  void send(const Bytes& wire, Time now) { put({free_at(now), Output::SENDS, wire}); }
  Time free_at(Time now) const;
  void put(Output output);
  void answer_download(View packet, Time now);
  std::optional<Fault> take_request(const std::string& name, View request, Time now);
  void restart(Time now, Mode next);
  void end_session();
  void start_in(Mode mode);
  void keep_flash();
  void send_damaged(const Fault& fault, Bytes payload, Time now);

  Model model_;
  std::vector<TimelineEntry> timeline_;
  size_t next_entry_ = 0;
  Faults faults_;
  Trace trace_;
  Deframer deframer_;
  std::deque<Output> output_;  // in order of time
  bool gone_ = false;
  Mode mode_ = Mode::DIAGNOSTIC;
  struct Start {
    Time at;
    Mode mode;
  };
  std::optional<Start> start_;  // under way while the device is gone
  DownloadMode download_;
};

}  // namespace sim
