// Numbers of the modem and of the module in words.
#pragma once

#include <cstdint>
#include <string>

namespace zopctl {

std::string vurn_result(int result);      // "result 2 (failed)"
std::string zop_result(unsigned result);  // "result 7 (bad response)"

std::string sim_status(uint32_t status);
std::string lock_status(uint32_t lock);
std::string registration(uint32_t registration);
std::string service(int32_t service);
std::string system_mode(uint32_t mode);
std::string data_service_mode(int mode);
std::string band(int32_t band);

// "4 [####.]", or "none [.....]".
std::string bars_picture(int bars);

// Throws Failure, with what and the result in words, unless result is ZOP_SUCCESS.
void require(unsigned result, const char* what);

}  // namespace zopctl
