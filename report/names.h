// Names of the modem's codes in the report, one table for each field. An underscore is shown as a
// blank. Causes are those of 3GPP TS 24.008 (10.5.3.6, 10.5.5.14 and 10.5.6.6).
#pragma once

#include <stdint.h>

#include "include/zop.h"
#include "include/zop_diag_info.h"

struct EnumName {
  int16_t value;
  const char* name;
};

// Band. 2 and 13 do not exist.
inline constexpr EnumName BAND_NAMES[] = {
    {ZOP_BAND_NONE, "None"},
    {0, "BC0"},
    {1, "BC1"},
    {3, "BC3"},
    {4, "BC4"},
    {5, "BC5"},
    {6, "BC6"},
    {7, "BC7"},
    {8, "BC8"},
    {9, "BC9"},
    {10, "BC10"},
    {11, "BC11"},
    {12, "BC12"},
    {14, "BC14"},
    {15, "BC15"},
    {16, "BC16"},
    {ZOP_BAND_GSM_450, "GSM_450"},
    {ZOP_BAND_GSM_480, "GSM_480"},
    {ZOP_BAND_GSM_750, "GSM_750"},
    {ZOP_BAND_GSM_850, "GSM_850"},
    {ZOP_BAND_EGSM_900, "GSM_EGSM_900"},
    {ZOP_BAND_PGSM_900, "GSM_PGSM_900"},
    {ZOP_BAND_RGSM_900, "GSM_RGSM_900"},
    {ZOP_BAND_GSM_1800, "GSM_DCS_1800"},
    {ZOP_BAND_GSM_1900, "GSM_PCS_1900"},
    {ZOP_BAND_WCDMA_2100, "WCDMA_I_IMT_2000"},
    {ZOP_BAND_WCDMA_1900, "WCDMA_II_PCS_1900"},
    {ZOP_BAND_WCDMA_1700_III, "WCDMA_III_1700"},
    {ZOP_BAND_WCDMA_1700_IV, "WCDMA_IV_1700"},
    {ZOP_BAND_WCDMA_850, "WCDMA_V_850"},
    {ZOP_BAND_WCDMA_800, "WCDMA_VI_800"},
    {ZOP_BAND_WCDMA_2600, "WCDMA_VII_2600"},
    {ZOP_BAND_WCDMA_900, "WCDMA_VIII_900"},
    {ZOP_BAND_WCDMA_1700_IX, "WCDMA_IX_1700"},
    {110, "WLAN_US_2400"},
    {111, "WLAN_JAPAN_2400"},
    {112, "WLAN_EUROPE_2400"},
    {113, "WLAN_FRANCE_2400"},
    {114, "WLAN_SPAIN_2400"},
    {115, "WLAN_US_5000"},
    {116, "WLAN_JAPAN_5000"},
    {117, "WLAN_EUROPE_5000"},
    {118, "WLAN_FRANCE_5000"},
    {119, "WLAN_SPAIN_5000"},
};

// System Mode
inline constexpr EnumName SYSTEM_MODE_NAMES[] = {
    {ZOP_SYSTEM_NONE, "None"},   {ZOP_SYSTEM_NO_SERVICE, "No service"},
    {ZOP_SYSTEM_AMPS, "AMPS"},   {ZOP_SYSTEM_CDMA, "CDMA"},
    {ZOP_SYSTEM_GSM, "GSM"},     {ZOP_SYSTEM_HDR, "HDR"},
    {ZOP_SYSTEM_WCDMA, "WCDMA"}, {ZOP_SYSTEM_GPS, "GPS"},
    {ZOP_SYSTEM_GW, "GW"},       {ZOP_SYSTEM_WLAN, "WLAN"},
};

// Data Service Mode
inline constexpr EnumName DATA_SERVICE_MODE_NAMES[] = {
    {ZOP_DATA_UNKNOWN, "Unknown"}, {ZOP_DATA_GPRS, "GPRS"},   {ZOP_DATA_EDGE, "EDGE"},
    {ZOP_DATA_WCDMA, "WCDMA"},     {ZOP_DATA_HSDPA, "HSDPA"},
};

// Service Status
inline constexpr EnumName SERVICE_STATUS_NAMES[] = {
    {ZOP_SERVICE_NONE, "None"},
    {ZOP_SERVICE_NO_SERVICE, "No service"},
    {ZOP_SERVICE_LIMITED, "Limited service"},
    {ZOP_SERVICE_FULL, "Service"},
    {ZOP_SERVICE_LIMITED_REGIONAL, "Limited regional"},
    {ZOP_SERVICE_POWER_SAVE, "Power save"},
};

// Reg Status
inline constexpr EnumName REG_STATUS_NAMES[] = {
    {ZOP_REGISTRATION_NONE, "NONE"},
    {ZOP_REGISTRATION_SUCCESS, "SUCCESS"},
    {ZOP_REGISTRATION_FAILED, "FAIL"},
    {ZOP_REGISTRATION_NO_NETWORK, "NO_NETWORK"},
};

// Call Status
inline constexpr EnumName CALL_STATUS_NAMES[] = {
    {ZOP_CALL_NONE, "None"},
    {ZOP_CALL_IDLE, "Idle"},
    {ZOP_CALL_ORIGINATING, "Originating"},
    {ZOP_CALL_INCOMING, "Incoming"},
    {ZOP_CALL_ORIGINATING_INCOMING, "Orig incoming"},
    {ZOP_CALL_CONVERSATION, "Conversation"},
    {ZOP_CALL_RELEASE, "Release"},
    {ZOP_CALL_RECALL_PENDING, "Recall RSP pend"},
};

// MM Attach, MM LU, GMM Attach and GMM RAU State
inline constexpr EnumName UPDATE_RESULT_NAMES[] = {
    {ZOP_ATTACH_NOT_AVAILABLE, "Not available"},  {ZOP_ATTACH_ACCEPTED, "Attach accept"},
    {ZOP_ATTACH_REJECTED, "Attach reject"},       {ZOP_RA_UPDATE_ACCEPTED, "RA update accept"},
    {ZOP_RA_UPDATE_REJECTED, "RA update reject"}, {ZOP_MM_ATTACH_ACCEPTED, "Attach accept"},
    {ZOP_MM_ATTACH_REJECTED, "Attach reject"},    {ZOP_LA_UPDATE_ACCEPTED, "LU update"},
    {ZOP_LA_UPDATE_REJECTED, "LU reject"},
};

// GMM State
inline constexpr EnumName GMM_STATE_NAMES[] = {
    {ZOP_GMM_NULL, "Null"},
    {ZOP_GMM_DEREGISTERED, "Deregistered"},
    {ZOP_GMM_REGISTERING, "Registered init"},
    {ZOP_GMM_REGISTERED, "Registered"},
    {ZOP_GMM_DEREGISTERING, "Deregistered init"},
    {ZOP_GMM_RA_UPDATING, "RA updating init"},
    {ZOP_GMM_SERVICE_REQUEST, "Service request init"},
};

// PDP State
inline constexpr EnumName PDP_STATE_NAMES[] = {
    {ZOP_PDP_INACTIVE, "INACTIVE"},
    {ZOP_PDP_ACTIVE_PENDING, "ACTIVE_PENDING"},
    {ZOP_PDP_ACTIVE, "ACTIVE"},
    {ZOP_PDP_MODIFY_PENDING, "MODIFY_PENDING"},
    {ZOP_PDP_INACTIVE_PENDING, "INACTIVE_PENDING"},
};

// Network Mode
inline constexpr EnumName NETWORK_MODE_NAMES[] = {
    {ZOP_NETWORK_MODE_COMBINED, "CS PS combined attach mode"},
    {ZOP_NETWORK_MODE_SEPARATE, "CS PS separate attach mode"},
    {ZOP_NETWORK_MODE_SEPARATE_2G, "2G CS PS separate attach mode"},
    {ZOP_NETWORK_MODE_UNAVAILABLE, "Unavailable"},
};

// PMM Mode
inline constexpr EnumName PMM_MODE_NAMES[] = {
    {ZOP_PMM_DETACHED, "DETACHED"},
    {ZOP_PMM_IDLE, "IDLE"},
    {ZOP_PMM_CONNECTED, "CONNECTED"},
};

// Selection Mode
inline constexpr EnumName SELECTION_MODE_NAMES[] = {
    {ZOP_SELECTION_AUTOMATIC, "AUTOMATIC"},
    {ZOP_SELECTION_MANUAL, "MANUAL"},
};

// HSDPA Status
inline constexpr EnumName HSDPA_STATUS_NAMES[] = {
    {ZOP_HSDPA_INACTIVE, "INACTIVE"},
    {ZOP_HSDPA_ACTIVE, "ACTIVE"},
    {ZOP_HSDPA_SUSPENDED, "SUSPEND"},
};

// HSDPA Indication
inline constexpr EnumName HSDPA_INDICATION_NAMES[] = {
    {ZOP_HSPA_NONE, "None"},
    {ZOP_HSPA_UNSUPPORTED, "HSDPA HSUPA unsupp"},
    {ZOP_HSPA_HSDPA, "HSDPA supp"},
    {ZOP_HSPA_HSUPA, "HSUPA supp"},
    {ZOP_HSPA_HSDPA_HSUPA, "HSDPA HSUPA supp"},
};

// EGPRS Indication. The byte is read unsigned, so -1 never matches.
inline constexpr EnumName EGPRS_INDICATION_NAMES[] = {
    {ZOP_EGPRS_NONE, "None"},
    {ZOP_EGPRS_NOT_AVAILABLE, "Not available"},
    {ZOP_EGPRS_AVAILABLE, "Available"},
};

// SIM Status: the card
inline constexpr EnumName SIM_STATE_NAMES[] = {
    {ZOP_SIM_NO_CARD, "NO_CARD"},      {ZOP_SIM_INVALID_CARD, "INVALID_CARD"},
    {ZOP_SIM_READY, "Valid"},          {ZOP_SIM_NOT_INITIALISED, "NOT_INIT"},
    {ZOP_SIM_NOT_READY, "NOT_READY"},  {ZOP_SIM_REINITIALISING, "CARD_REINIT"},
    {ZOP_SIM_AVAILABLE, "AVAIL_CARD"}, {ZOP_SIM_ILLEGAL_CARD, "ILLEGAL_CARD"},
};

// SIM Status: the PIN, written after "PIN"
inline constexpr EnumName PIN_STATE_NAMES[] = {
    {ZOP_PIN_UNKNOWN, "_UNKNOWN"},     {ZOP_PIN_OKAY, " okay"},
    {ZOP_PIN_ENABLED, "_ENABLED"},     {ZOP_PIN_VERIFIED, "_VERIFIED"},
    {ZOP_PIN_BLOCKED, "_BLOCKED"},     {ZOP_PIN_PERM_DISABLED, "_PERM_DISABLED"},
    {ZOP_PIN_NOT_VALID, "_NOT_VALID"}, {ZOP_PIN_NOT_INITIALISED, "_NOT_INIT"},
};

// MM and GMM errors
inline constexpr EnumName MM_CAUSE_NAMES[] = {
    {ZOP_CAUSE_NONE, "No error"},
    {2, "IMSI unknown in HLR"},
    {3, "Illegal MS"},
    {4, "IMSI unknown in VLR"},
    {5, "IMEI not accepted"},
    {6, "Illegal ME"},
    {7, "GPRS services not allowed"},
    {8, "GPRS and non-GPRS services not allowed"},
    {9, "MS identity not derived"},
    {10, "Implicitly detached"},
    {11, "PLMN not allowed"},
    {12, "LA not allowed"},
    {13, "National roaming not allowed"},
    {14, "GPRS services not allowed in this PLMN"},
    {15, "No suitable cells in LA"},
    {16, "MSC temporarily not reachable"},
    {17, "Network failure"},
    {20, "MAC failure"},
    {21, "Synch failure"},
    {22, "Congestion"},
    {23, "GSM auth unaccepted"},
    {32, "Service option not supported"},
    {33, "Req serv opt not subscribed"},
    {34, "Service opt out of order"},
    {38, "Call cannot be identified"},
    {40, "No PDP context activated"},
    {48, "New cell entry retry - MIN"},
    {63, "New cell entry retry - MAX"},
    {95, "Semantically incorrect msg"},
    {96, "Invalid mandatory info"},
    {97, "Message type nonexistent"},
    {98, "Msg type not compatible protocol state"},
    {99, "IE nonexistent"},
    {101, "Msg not compatible protocol state"},
    {255, "Not available"},
};

// PDP Rej Reason
inline constexpr EnumName PDP_CAUSE_NAMES[] = {
    {ZOP_CAUSE_NONE, "No error"},
    {1, "Unknown cause"},
    {8, "Operator determined barring"},
    {25, "LLC SNDCP failure"},
    {26, "Insufficient resources"},
    {27, "Missing or unknown APN"},
    {28, "Unknown PDP address or type"},
    {29, "User authentication failed"},
    {30, "Activation rejected by GGSN"},
    {31, "Activation rejected unspecified"},
    {32, "Service option not supported"},
    {33, "Service not subscribed"},
    {34, "Service out of order"},
    {35, "NSAPI already used"},
    {36, "Regular deactivation"},
    {37, "QOS not accepted"},
    {38, "Network failure"},
    {39, "Reactivation required"},
    {40, "Feature not supported"},
    {41, "Semantic error in TFT"},
    {42, "Syntactic error in TFT"},
    {43, "Unknown PDP context"},
    {44, "Semantic error in filter"},
    {45, "Syntactic error in filter"},
    {46, "PDP without TFT active"},
    {81, "Invalid trans ID"},
    {95, "Semantic incorrect mesg"},
    {96, "Invalid mandatory info"},
    {97, "Mesg type nonexistent"},
    {98, "Mesg type not compatible"},
    {99, "IE nonexistent"},
    {100, "Conditional IE error"},
    {101, "Mesg not compatible"},
    {ZOP_CAUSE_PROTOCOL_ERROR, "Protocol error"},
    {112, "APN type conflict"},
};
