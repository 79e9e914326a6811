// The names of the modem's codes in the report, one table a field. An underscore is shown as a
// blank. Causes are those of 3GPP TS 24.008 (10.5.3.6, 10.5.5.14 and 10.5.6.6).
#pragma once

#include <stdint.h>

struct EnumName {
  int32_t value;
  const char* name;
};

// Band. There is no 2 and no 13.
inline constexpr EnumName BAND_NAMES[] = {
    {-1, "None"},
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
    {40, "GSM_450"},
    {41, "GSM_480"},
    {42, "GSM_750"},
    {43, "GSM_850"},
    {44, "GSM_EGSM_900"},
    {45, "GSM_PGSM_900"},
    {46, "GSM_RGSM_900"},
    {47, "GSM_DCS_1800"},
    {48, "GSM_PCS_1900"},
    {80, "WCDMA_I_IMT_2000"},
    {81, "WCDMA_II_PCS_1900"},
    {82, "WCDMA_III_1700"},
    {83, "WCDMA_IV_1700"},
    {84, "WCDMA_V_850"},
    {85, "WCDMA_VI_800"},
    {86, "WCDMA_VII_2600"},
    {87, "WCDMA_VIII_900"},
    {88, "WCDMA_IX_1700"},
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
    {-1, "None"}, {0, "No service"}, {1, "AMPS"}, {2, "CDMA"}, {3, "GSM"},
    {4, "HDR"},   {5, "WCDMA"},      {6, "GPS"},  {7, "GW"},   {8, "WLAN"},
};

// Data Service Mode
inline constexpr EnumName DATA_SERVICE_MODE_NAMES[] = {
    {-1, "Unknown"}, {0, "GPRS"}, {1, "EDGE"}, {2, "WCDMA"}, {3, "HSDPA"},
};

// Service Status
inline constexpr EnumName SERVICE_STATUS_NAMES[] = {
    {-1, "None"},   {0, "No service"},       {1, "Limited service"},
    {2, "Service"}, {3, "Limited regional"}, {4, "Power save"},
};

// Reg Status
inline constexpr EnumName REG_STATUS_NAMES[] = {
    {0, "NONE"},
    {1, "SUCCESS"},
    {2, "FAIL"},
    {3, "NO_NETWORK"},
};

// Call Status
inline constexpr EnumName CALL_STATUS_NAMES[] = {
    {-1, "None"},         {0, "Idle"},         {1, "Originating"}, {3, "Incoming"},
    {4, "Orig incoming"}, {5, "Conversation"}, {6, "Release"},     {7, "Recall RSP pend"},
};

// MM Attach, MM LU, GMM Attach and GMM RAU State
inline constexpr EnumName UPDATE_RESULT_NAMES[] = {
    {0, "Not available"},    {1, "Attach accept"},    {2, "Attach reject"},
    {5, "RA update accept"}, {6, "RA update reject"}, {11, "Attach accept"},
    {12, "Attach reject"},   {13, "LU update"},       {14, "LU reject"},
};

// GMM State
inline constexpr EnumName GMM_STATE_NAMES[] = {
    {0, "Null"},
    {1, "Deregistered"},
    {2, "Registered init"},
    {3, "Registered"},
    {4, "Deregistered init"},
    {5, "RA updating init"},
    {6, "Service request init"},
};

// PDP State
inline constexpr EnumName PDP_STATE_NAMES[] = {
    {0, "INACTIVE"},       {1, "ACTIVE_PENDING"},   {2, "ACTIVE"},
    {3, "MODIFY_PENDING"}, {4, "INACTIVE_PENDING"},
};

// Network Mode
inline constexpr EnumName NETWORK_MODE_NAMES[] = {
    {0, "CS PS combined attach mode"},
    {1, "CS PS separate attach mode"},
    {2, "2G CS PS separate attach mode"},
    {3, "Unavailable"},
};

// PMM Mode
inline constexpr EnumName PMM_MODE_NAMES[] = {
    {0, "DETACHED"},
    {1, "IDLE"},
    {2, "CONNECTED"},
};

// Selection Mode
inline constexpr EnumName SELECTION_MODE_NAMES[] = {
    {0, "AUTOMATIC"},
    {1, "MANUAL"},
};

// HSDPA Status
inline constexpr EnumName HSDPA_STATUS_NAMES[] = {
    {0, "INACTIVE"},
    {1, "ACTIVE"},
    {2, "SUSPEND"},
};

// HSDPA Indication
inline constexpr EnumName HSDPA_INDICATION_NAMES[] = {
    {-1, "None"},      {0, "HSDPA HSUPA unsupp"}, {1, "HSDPA supp"},
    {2, "HSUPA supp"}, {3, "HSDPA HSUPA supp"},
};

// EGPRS Indication. Its byte is read unsigned: the -1 is never met.
inline constexpr EnumName EGPRS_INDICATION_NAMES[] = {
    {-1, "None"},
    {0, "Not available"},
    {1, "Available"},
};

// SIM Status, the card
inline constexpr EnumName SIM_STATE_NAMES[] = {
    {0, "NO_CARD"},   {1, "INVALID_CARD"}, {2, "Valid"},      {3, "NOT_INIT"},
    {4, "NOT_READY"}, {5, "CARD_REINIT"},  {6, "AVAIL_CARD"}, {7, "ILLEGAL_CARD"},
};

// SIM Status, the PIN; written behind "PIN"
inline constexpr EnumName PIN_STATE_NAMES[] = {
    {0, "_UNKNOWN"}, {1, " okay"},          {2, "_ENABLED"},   {3, "_VERIFIED"},
    {4, "_BLOCKED"}, {5, "_PERM_DISABLED"}, {6, "_NOT_VALID"}, {7, "_NOT_INIT"},
};

// MM and GMM errors
inline constexpr EnumName MM_CAUSE_NAMES[] = {
    {0, "No error"},
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
    {0, "No error"},
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
    {111, "Protocol error"},
    {112, "APN type conflict"},
};
