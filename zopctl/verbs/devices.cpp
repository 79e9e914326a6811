// zopctl devices: the ports of modems, who answers there, and who uses them.
#include <fmt/format.h>

#include "zopctl/host/probe.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

static Json known(const std::string& text) { return text.empty() ? Json() : Json(text); }

static Json as_json(const ProbedPort& probed) {
  const Identity none, &modem = probed.modem ? *probed.modem : none;
  return {{"device", probed.port.device},        {"driver", probed.port.driver},
          {"answers", probed.modem.has_value()}, {"hardware", known(modem.hardware)},
          {"firmware", known(modem.firmware)},   {"imei", known(modem.imei)},
          {"not_asked", known(probed.unused)}};
}

static std::string words_of(const ProbedPort& probed) {
  if (!probed.unused.empty()) return "not asked: " + probed.unused;
  if (!probed.modem) return "does not answer";
  const Identity& modem = *probed.modem;
  std::string text = "answers";
  for (auto [name, value] :
       {std::pair("hardware", &modem.hardware), std::pair("firmware", &modem.firmware),
        std::pair("IMEI", &modem.imei)})
    if (!value->empty()) text += fmt::format(", {} {}", name, *value);
  return text;
}

static Findings devices(const ModuleLibrary&, const Arguments& arguments) {
  std::vector<ProbedPort> ports = probe_ports();
  Json list = Json::array();
  std::string text;
  for (ProbedPort& probed : ports) {
    if (arguments.redact && probed.modem) probed.modem->imei.clear();
    list.push_back(as_json(probed));
    text += (text.empty() ? "" : "\n         ") + probed.port.device + "  " + words_of(probed);
  }
  if (ports.empty()) text = "none; is a modem plugged in and its driver loaded?";
  return one_section("devices", "Serial ports of modems", {shown("ports", "Ports", list, text)});
}

const Verb DEVICES = {.name = "devices",
                      .help = "the serial ports of modems: who answers, and who uses them",
                      .need = Session::LIBRARY,
                      .redacts = true,
                      .run = devices};

}  // namespace zopctl
