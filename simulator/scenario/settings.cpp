// The table of settings. Values may be written as words or as numbers.
#include "simulator/scenario/settings.h"

#include <algorithm>

#include "simulator/download/programmer.h"

namespace sim {

// Key and place of a value, from its name in the model.
#define NUMBER(section, name) #section "." #name, [](Model & m) -> int& { return m.section.name; }
#define TEXT(section, name) \
#section "." #name, [](Model & m) -> std::string& { return m.section.name; }

static const std::vector<Word> NO_YES = {{"no", 0}, {"yes", 1}};
static const std::vector<Word> SIM_WORDS = {
    {"none", ZOP_SIM_NO_CARD},        {"invalid", ZOP_SIM_INVALID_CARD},
    {"ready", ZOP_SIM_READY},         {"not-initialised", ZOP_SIM_NOT_INITIALISED},
    {"not-ready", ZOP_SIM_NOT_READY}, {"illegal", ZOP_SIM_ILLEGAL_CARD}};
static const std::vector<Word> LOCK_WORDS = {{"okay", ZOP_PIN_OKAY},
                                             {"pin-wanted", ZOP_PIN_ENABLED},
                                             {"verified", ZOP_PIN_VERIFIED},
                                             {"blocked", ZOP_PIN_BLOCKED},
                                             {"off", ZOP_PIN_PERM_DISABLED}};
static const std::vector<Word> REGISTRATION_WORDS = {{"none", ZOP_REGISTRATION_NONE},
                                                     {"registered", ZOP_REGISTRATION_SUCCESS},
                                                     {"failed", ZOP_REGISTRATION_FAILED},
                                                     {"no-network", ZOP_REGISTRATION_NO_NETWORK}};
static const std::vector<Word> SERVICE_WORDS = {{"none", ZOP_SERVICE_NO_SERVICE},
                                                {"limited", ZOP_SERVICE_LIMITED},
                                                {"full", ZOP_SERVICE_FULL},
                                                {"limited-regional", ZOP_SERVICE_LIMITED_REGIONAL},
                                                {"power-save", ZOP_SERVICE_POWER_SAVE}};
static const std::vector<Word> DATA_WORDS = {{"gprs", ZOP_DATA_GPRS},
                                             {"edge", ZOP_DATA_EDGE},
                                             {"wcdma", ZOP_DATA_WCDMA},
                                             {"hsdpa", ZOP_DATA_HSDPA}};
static const std::vector<Word> SYSTEM_WORDS = {
    {"none", ZOP_SYSTEM_NO_SERVICE}, {"gsm", ZOP_SYSTEM_GSM}, {"wcdma", ZOP_SYSTEM_WCDMA}};
static const std::vector<Word> GMM_ATTACH_WORDS = {{"detached", ZOP_ATTACH_NOT_AVAILABLE},
                                                   {"attached", ZOP_ATTACH_ACCEPTED}};
static const std::vector<Word> PDP_WORDS = {{"inactive", ZOP_PDP_INACTIVE},
                                            {"pending", ZOP_PDP_ACTIVE_PENDING},
                                            {"active", ZOP_PDP_ACTIVE}};
static const std::vector<Word> CALL_WORDS = {{"idle", ZOP_CALL_IDLE},
                                             {"originating", ZOP_CALL_ORIGINATING},
                                             {"conversation", ZOP_CALL_CONVERSATION}};

static const NumberSetting NUMBERS[] = {
    {NUMBER(identity, serial_number), 0, 0x7FFFFFFF},
    {NUMBER(sim, status), 0, 255, SIM_WORDS},
    {NUMBER(sim, lock), 0, 255, LOCK_WORDS},
    {NUMBER(sim, retries), 0, 255},
    {NUMBER(sim, card_mode), 0, 0x7FFF},
    {NUMBER(sim, key_retries), 0, 10},
    {NUMBER(network, lac), 0, 0xFFFF},
    {NUMBER(network, rac), 0, 255},
    {NUMBER(network, cell_id), 0, 0x7FFFFFFF},
    {NUMBER(network, registration), 0, 255, REGISTRATION_WORDS},
    {NUMBER(network, roaming), 0, 255, NO_YES},
    {NUMBER(network, service), -1, 127, SERVICE_WORDS},
    {NUMBER(network, home_allowed), 0, 1, NO_YES},
    {NUMBER(network, carrier), -128, 127},
    {NUMBER(radio, system_mode), 0, 255, SYSTEM_WORDS},
    {NUMBER(radio, data_service_mode), -1, 127, DATA_WORDS},
    {NUMBER(radio, channel), 0, 0xFFFF},
    {NUMBER(radio, band), -1, 0x7FFF},
    {NUMBER(radio, rssi), -200, 0},
    {NUMBER(radio, rscp), -200, 0},
    {NUMBER(radio, tx_power), -200, 100},
    {NUMBER(radio, pathloss), 0, 200},
    {NUMBER(radio, egprs), -1, 255, NO_YES},
    {NUMBER(radio, hsdpa_status), 0, 255},
    {NUMBER(radio, hsdpa_indication), -1, 127},
    {NUMBER(radio, drx), 0, 0xFFFF},
    {NUMBER(radio, mfrm), 0, 255},
    {NUMBER(state, network_mode), 0, 127},
    {NUMBER(state, mm_attach), 0, 255},
    {NUMBER(state, mm_attach_error), 0, 255},
    {NUMBER(state, mm_lu), 0, 255},
    {NUMBER(state, mm_lu_error), 0, 255},
    {NUMBER(state, gmm_attach), 0, 255, GMM_ATTACH_WORDS},
    {NUMBER(state, gmm_attach_error), 0, 255},
    {NUMBER(state, gmm_rau), 0, 255},
    {NUMBER(state, gmm_rau_error), 0, 255},
    {NUMBER(state, gmm), 0, 255},
    {NUMBER(state, rau_type), 0, 255},
    {NUMBER(state, pdp), 0, 255, PDP_WORDS},
    {NUMBER(state, pdp_reject_reason), 0, 255},
    {NUMBER(state, pmm), 0, 255},
    {NUMBER(state, call), -1, 127, CALL_WORDS},
    {NUMBER(state, power_up), 0, 255},
    {NUMBER(device, end_status), 0, 255},
    {NUMBER(device, crash_dump), 0, 1, NO_YES},
    {NUMBER(device, crashed), 0, 1, NO_YES},
    {NUMBER(device, half_written), 0, ALL_IMAGES, NO_YES},
    {NUMBER(device, backup_value), 0, 255},
    {NUMBER(clock, zone), -96, 96},
    {NUMBER(clock, daylight_saving), 0, 2},
    {NUMBER(clock, provided), 0, 1, NO_YES},
};

static const TextSetting TEXTS[] = {
    {TEXT(identity, imei), 16, true},
    {TEXT(identity, imsi), 16, true},
    {TEXT(identity, iccid), 20, true},
    {TEXT(identity, phone_number), 36, false},
    {TEXT(identity, firmware), 20, false},
    {TEXT(identity, hardware), 20, false},
    {TEXT(identity, build), 63, false},
    {TEXT(sim, pin), 8, true},
    {TEXT(sim, key), 8, true},
    {TEXT(network, name), 255, false},
    {TEXT(network, mcc), 3, false},
    {TEXT(network, mnc), 3, false},
};

const NumberSetting* find_number_setting(const std::string& key) {
  return find_by_key(NUMBERS, key);
}

const TextSetting* find_text_setting(const std::string& key) { return find_by_key(TEXTS, key); }

static std::string describe(const NumberSetting& setting) {
  std::string text = std::string(setting.key) + "\t" + std::to_string(setting.min) + " to " +
                     std::to_string(setting.max);
  for (const Word& word : setting.words) text += std::string(", ") + word.name;
  return text;
}

std::vector<std::string> describe_settings() {
  std::vector<std::string> lines;
  for (const NumberSetting& setting : NUMBERS) lines.push_back(describe(setting));
  for (const TextSetting& setting : TEXTS) {
    lines.push_back(std::string(setting.key) + "\tup to " + std::to_string(setting.longest) +
                    (setting.digits_only ? " digits" : " characters"));
  }
  std::ranges::sort(lines);
  return lines;
}

bool is_section(const std::string& name) {
  if (name == "nv") return true;
  auto belongs = [&](auto& setting) { return std::string(setting.key).starts_with(name + "."); };
  return std::ranges::any_of(NUMBERS, belongs) || std::ranges::any_of(TEXTS, belongs);
}

}  // namespace sim
