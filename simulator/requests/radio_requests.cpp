// Radio cells, and the field-test screen that shows everything at once.
#include "simulator/requests/radio_requests.h"

#include <fmt/format.h>

#include <algorithm>

namespace sim {

constexpr size_t MAX_CELLS = 32;
constexpr size_t MAX_SHOWN_CELLS = 31;  // an empty entry ends the screen's list
constexpr size_t MAX_BEST = 6;

void cell_set(const Incoming& in, Answer& a, int set) {
  std::vector<WcdmaCell> cells;
  std::ranges::copy_if(in.model.radio.cells, std::back_inserter(cells),
                       [&](const WcdmaCell& cell) { return cell.set == set; });
  cells.resize(std::min(MAX_CELLS, cells.size()));
  a.u8(static_cast<int>(cells.size()));
  for (const WcdmaCell& cell : cells) a.u16(cell.code).u16(cell.ecio);
}

void neighbors(const Radio& radio, Answer& a) {
  size_t count = std::min(MAX_CELLS, radio.neighbors.size());
  a.u32(static_cast<int64_t>(count));
  for (size_t i = 0; i < count; ++i) {
    a.u16(radio.neighbors[i].rssi).u16(radio.neighbors[i].arfcn).u8(radio.neighbors[i].bsic);
  }
  a.zeros((MAX_CELLS - count) * 5);
}

void best_six(const Radio& radio, Answer& a) {
  size_t count = std::min(MAX_BEST, radio.best.size());
  a.u32(static_cast<int64_t>(count));
  for (size_t i = 0; i < count; ++i) {
    const GsmBestCell& cell = radio.best[i];
    a.u8(cell.first).u8(cell.second).u8(0).u32(cell.cell_id).u16(cell.channel);
  }
  a.zeros((MAX_BEST - count) * 9);
}

static void wcdma_part(const Radio& radio, Answer& a) {
  size_t count = std::min(MAX_SHOWN_CELLS, radio.cells.size());
  a.u16(-radio.rscp);
  for (size_t i = 0; i < count; ++i) {
    a.u16(radio.cells[i].set).u16(radio.cells[i].code).u16(radio.cells[i].ecio);
  }
  a.zeros((MAX_CELLS - count) * 6);
  a.u16(radio.drx).u8(radio.hsdpa_status).u8(radio.hsdpa_indication).zeros(30);
}

static void gsm_part(const Radio& radio, Answer& a) {
  a.u32(radio.pathloss);
  neighbors(radio, a);
  best_six(radio, a);
  a.u8(radio.mfrm).u8(radio.egprs);
}

static void states(const Model& m, Answer& a) {
  const State& s = m.state;
  a.u8(s.network_mode).u8(s.mm_attach).u8(s.mm_attach_error).u8(s.mm_lu).u8(s.mm_lu_error);
  a.u8(s.gmm_attach).u8(s.gmm_attach_error).u8(s.gmm_rau).u8(s.gmm_rau_error).u8(s.gmm);
  a.u8(s.pdp).u8(s.pdp_reject_reason).u8(s.pmm);
  a.u8(m.device.test_mode).u8(m.device.selection_mode);
}

void screen(const Incoming& in, Answer& a) {
  const Model& m = in.model;
  a.u8(m.radio.system_mode).u8(m.network.service).u8(m.network.registration);
  a.text(m.network.name, 32).text(m.identity.imei, 16).text(m.identity.imsi, 16);
  a.u32(m.radio.channel).u32(m.network.cell_id).u8(m.state.call);
  a.text(m.network.mcc, 3).text(m.network.mnc, 3);
  a.text(fmt::format("{:04X}", m.network.lac), 4);
  a.u32(m.network.rac).u32(m.radio.rssi).u32(m.radio.tx_power).u32(m.radio.band);
  states(m, a);
  if (m.radio.system_mode == ZOP_SYSTEM_GSM) {
    gsm_part(m.radio, a);
  } else {
    wcdma_part(m.radio, a);
  }
}

}  // namespace sim
