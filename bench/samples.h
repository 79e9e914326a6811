// What benchmarks feed the module.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "include/zop_diag_info.h"
#include "link/frame_codec.h"
#include "report/rendering.h"

// Bytes with their usual share of stuffed ones, always the same.
inline std::vector<uint8_t> sample_bytes(size_t size) {
  std::vector<uint8_t> bytes(size);
  uint32_t state = 1;
  for (uint8_t& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<uint8_t>(state >> 24);
  }
  return bytes;
}

inline std::vector<uint8_t> framed(const std::vector<uint8_t>& payload, bool leading_flag) {
  std::vector<uint8_t> frame(2 * (payload.size() + 2) + 2);
  uint32_t size = static_cast<uint32_t>(payload.size());
  frame.resize(encode_frame(frame.data(), payload.data(), size, leading_flag));
  return frame;
}

// The record of a healthy WCDMA modem, with full network lists.
inline void fill_record() {
  prv_zop_init_logging();
  gDiagInfo.screen.system_mode = ZOP_SCREEN_WCDMA;
  strcpy(gDiagInfo.screen.network_name, "Testnet");
  memcpy(gDiagInfo.screen.mcc, "001", 3);
  for (auto& cell : gDiagInfo.screen.radio.wcdma.cells) cell.scrambling_code[0] = 100;
  gDiagInfo.oplmn_count = 140;
  for (auto& block : gDiagInfo.oplmn) {
    block[0] = 20;
    for (size_t i = 0; i < 20; ++i) memcpy(block + 1 + 8 * i, "310410\x80", 8);
  }
  gDiagInfo.screen_time = 1'280'000'000;
  char warm[8192];  // the first use of the time zone reads its file
  prv_zop_output_to_log_string(warm, sizeof warm, 1);
}
