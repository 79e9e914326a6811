#include "tests/commands/every_command.h"

#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <tuple>

#include "include/zop.h"

namespace test {

enum : uint8_t { UNWRITTEN = 0xEE };

void Outputs::clear() {
  memset(static_cast<void*>(this), UNWRITTEN, sizeof *this);
  size = sizeof bytes;
}

std::string Outputs::text() const {
  auto last = std::find_if(std::rbegin(bytes), std::rend(bytes),
                           [](uint8_t byte) { return byte != UNWRITTEN; });
  std::string text = short_hex({bytes, last.base()});
  for (int32_t number : numbers) {
    if (number == static_cast<int32_t>(0xEEEEEEEE)) continue;
    if (!text.empty()) text += ' ';
    text += std::to_string(number);
  }
  return text;
}

namespace {

// Makes the arguments of a call from its words and the places of its outputs.
class Arguments {
 public:
  Arguments(const Words& words, Outputs& out, bool has_capacity)
      : words_(words), out_(out), has_capacity_(has_capacity) {}

  template <class T>
  T next() {
    if constexpr (std::is_same_v<T, uint32_t>) {
      return number_of(words_.at(word_++));
    } else if constexpr (std::is_same_v<T, uint32_t*>) {
      if (has_capacity_) return capacity();
      return static_cast<uint32_t*>(static_cast<void*>(&out_.numbers[number_++]));
    } else if constexpr (std::is_same_v<T, int32_t*>) {
      return &out_.numbers[number_++];
    } else if constexpr (std::is_same_v<T, const char*>) {
      inputs_[input_] = text(words_.at(word_++));
      return inputs_[input_++].c_str();
    } else if constexpr (std::is_same_v<T, const uint8_t*> || std::is_same_v<T, const void*>) {
      return static_cast<T>(input());
    } else if constexpr (std::is_pointer_v<T>) {
      return static_cast<T>(static_cast<void*>(out_.bytes));
    } else {  // a structure
      T record;
      memcpy(&record, input(), sizeof record);
      return record;
    }
  }

 private:
  // In quotes, or repeated: x*500.
  static std::string text(const std::string& word) {
    if (word.starts_with('"')) return text_of(word);
    return std::string(std::stoul(word.substr(2)), word[0]);
  }
  uint32_t* capacity() {
    if (word_ < words_.size()) out_.size = number_of(words_[word_++]);
    return &out_.size;
  }
  const void* input() {
    std::string word = words_.at(word_++), &bytes = inputs_[input_++];
    if (word.starts_with('"')) bytes = text_of(word);
    for (size_t i = 0; !word.starts_with('"') && i < word.size(); i += 2) {
      bytes += static_cast<char>(std::stoi(word.substr(i, 2), nullptr, 16));
    }
    bytes.resize(1024);
    return bytes.data();
  }
  const Words& words_;
  Outputs& out_;
  bool has_capacity_;
  size_t word_ = 1, number_ = 0, input_ = 0;
  std::string inputs_[2];
};

using Call = std::function<unsigned(const Words&, Outputs&)>;

// A pointer to bytes and one to a number, and no more, are a buffer and its capacity.
template <class... A>
Call call(unsigned (*function)(A...)) {
  constexpr bool buffer = (... && std::is_pointer_v<A>)&&(... || !std::is_same_v<A, uint32_t*>)&&(
      ... || std::is_same_v<A, uint32_t*>);
  return [function](const Words& words, Outputs& out) {
    Arguments arguments(words, out, buffer);
    return std::apply(function, std::tuple<A...>{arguments.next<A>()...});
  };
}

}  // namespace

template <class... Functions>
static std::map<std::string, Call> table(std::string names, Functions... functions) {
  std::map<std::string, Call> calls;
  std::istringstream in(names);
  auto next = [&in] {
    std::string name;
    std::getline(in >> std::ws, name, ',');
    return name;
  };
  (calls.emplace(next(), call(functions)), ...);
  return calls;
}
#define TABLE(...) table(#__VA_ARGS__, __VA_ARGS__)

static const std::map<std::string, Call> CALLS = TABLE(
    zop_download_firmware, zop_download_firmware_status, zop_download_firmware_end,
    zop_get_roaming_status, zop_try_to_use_home_network, zop_get_data_service_mode, zop_get_uarfcn,
    zop_get_call_status, zop_get_rac, zop_get_mcc, zop_get_mnc, zop_get_location_area_id,
    zop_get_cell_id, zop_get_network_name, zop_get_service_status, zop_get_registration_status,
    zop_get_info_event_orig, zop_get_info_event_act, zop_get_info_event_deact,
    zop_get_info_event_end, zop_get_band, zop_get_network_op_mode, zop_get_mm_attach_state,
    zop_get_gmm_attach_state, zop_get_mfrm, zop_get_gmm_state, zop_get_pdp_state, zop_get_pmm_mode,
    zop_get_drx, zop_get_hsdpa_status, zop_get_egprs_indication, zop_get_mm_lu_state,
    zop_get_gmm_rau_state, zop_get_powerup_flag, zop_get_rau_type, zop_get_carrier,
    zop_get_network_time, zop_get_system_mode, zop_get_imei, zop_get_imsi, zop_get_iccid,
    zop_get_radio_phone_number, zop_get_hardware_version, zop_get_firmware_version,
    zop_get_radio_serial_number, zop_get_card_mode, zop_get_tq2_version, zop_simcard_status,
    zop_simcard_verify, zop_simcard_change, zop_simcard_disable, zop_simcard_enable,
    zop_simcard_unblock, zop_simcard_pin_write, zop_simcard_pin_read, zop_vsim_status_change,
    zop_get_uim_data_oplmn, zop_get_uim_data_hplmn, zop_get_uim_data_rplmn, zop_get_uim_data_uplmn,
    zop_set_uim_data_uplmn, zop_get_uim_data_fplmn, zop_get_uim_data_oplmn_partial,
    zop_get_uim_data_hplmn_partial, zop_get_uim_data, zop_nv_read, zop_nv_write, zop_set_pref_mode,
    zop_get_pref_mode, zop_get_pref_service_domain, zop_set_mgrf_supported, zop_get_mgrf_supported,
    zop_set_acq_band_order, zop_get_acq_band_order, zop_set_diag_port, zop_set_reset,
    zop_set_error_fatal, zop_enable_factory_test, zop_set_band, zop_mode_change,
    zop_set_network_search_order, zop_get_backup_status, zop_set_backup, zop_read_pdp_profile,
    zop_write_pdp_profile, zop_get_rssi, zop_get_rscp, zop_get_txpower, zop_get_pathloss,
    zop_get_active_set_list, zop_get_monitored_set_list, zop_get_detected_set_list,
    zop_get_neighbor_cell_list, zop_get_best_six_cell_list, zop_get_field_information, zop_get_bars,
    zop_originate_call_test, zop_end_call_test, zop_send_sms, zop_test, zop_get_err_log,
    zop_get_err_clr, zop_debug_mode_start, zop_set_module_time);

unsigned call_command(const Words& words, Outputs& out) { return CALLS.at(words[0])(words, out); }

static std::vector<std::string> columns_of(const std::string& line) {
  std::vector<std::string> columns;
  for (size_t at = 0; at < line.size();) {
    size_t end = std::min(line.find(" | ", at), line.size());
    columns.push_back(line.substr(at, end - at));
    at = end + 3;
  }
  columns.resize(6);
  return columns;
}

static std::vector<Command> read_list() {
  std::ifstream file(COMMANDS);
  std::vector<Command> list;
  std::map<std::string, int> count;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    auto columns = columns_of(line);
    Words call = word_groups(columns[0], "")[0];
    ++count[call[0]];
    list.push_back(
        {columns[0], call, hex(columns[1]), columns[2], columns[3], hex(columns[4]), columns[5]});
  }
  for (Command& command : list) {
    if (count[command.call[0]] == 1) command.name = command.call[0];
  }
  return list;
}

const std::vector<Command>& every_command() {
  static const std::vector<Command> list = read_list();
  return list;
}

}  // namespace test
