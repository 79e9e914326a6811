// Numbers of the modem and of the module in words.
#pragma once

#include <cstdint>
#include <string>

namespace zopctl {

std::string vurn_result(int result);      // "result 2 (failed)"
std::string zop_result(unsigned result);  // "result 7 (bad response)"

std::string sim_status(uint32_t status);
std::string lock_status(uint32_t lock);
std::string sim_advice(uint32_t status, uint32_t lock);  // empty if the card is ready
std::string registration(uint32_t registration);
std::string service(int32_t service);
std::string system_mode(uint32_t mode);
std::string data_service(int32_t mode);
std::string band(int32_t band);
std::string ring_origin(int32_t origin);
std::string reject_cause(int32_t cause);  // of an attach or update, 3GPP TS 24.008
std::string pdp_cause(int32_t cause);     // of a data connection, the same

// "4 [####.]", or "none [.....]".
std::string bars_picture(int bars);

}  // namespace zopctl
