// The states of the modem: the code, the module's name for it in the report, and the word that
// zopctl shows everywhere. The codes are those of zop.h; causes are those of 3GPP TS 24.008.
#pragma once

#include <cstdint>
#include <string_view>

#include "include/zop.h"
#include "include/zop_diag_info.h"

namespace records {

struct StateWord {
  int32_t code;
  std::string_view name;  // in the report
  std::string_view word;
};

inline constexpr StateWord BANDS[] = {
    {ZOP_BAND_NONE, "None", "none"},
    {0, "BC0", "BC0"},
    {1, "BC1", "BC1"},
    {3, "BC3", "BC3"},
    {4, "BC4", "BC4"},
    {5, "BC5", "BC5"},
    {6, "BC6", "BC6"},
    {7, "BC7", "BC7"},
    {8, "BC8", "BC8"},
    {9, "BC9", "BC9"},
    {10, "BC10", "BC10"},
    {11, "BC11", "BC11"},
    {12, "BC12", "BC12"},
    {14, "BC14", "BC14"},
    {15, "BC15", "BC15"},
    {16, "BC16", "BC16"},
    {ZOP_BAND_GSM_450, "GSM 450", "GSM 450"},
    {ZOP_BAND_GSM_480, "GSM 480", "GSM 480"},
    {ZOP_BAND_GSM_750, "GSM 750", "GSM 750"},
    {ZOP_BAND_GSM_850, "GSM 850", "GSM 850"},
    {ZOP_BAND_EGSM_900, "GSM EGSM 900", "EGSM 900"},
    {ZOP_BAND_PGSM_900, "GSM PGSM 900", "PGSM 900"},
    {ZOP_BAND_RGSM_900, "GSM RGSM 900", "RGSM 900"},
    {ZOP_BAND_GSM_1800, "GSM DCS 1800", "DCS 1800"},
    {ZOP_BAND_GSM_1900, "GSM PCS 1900", "PCS 1900"},
    {ZOP_BAND_WCDMA_2100, "WCDMA I IMT 2000", "WCDMA 2100"},
    {ZOP_BAND_WCDMA_1900, "WCDMA II PCS 1900", "WCDMA 1900"},
    {ZOP_BAND_WCDMA_1700_III, "WCDMA III 1700", "WCDMA 1700 (III)"},
    {ZOP_BAND_WCDMA_1700_IV, "WCDMA IV 1700", "WCDMA 1700 (IV)"},
    {ZOP_BAND_WCDMA_850, "WCDMA V 850", "WCDMA 850"},
    {ZOP_BAND_WCDMA_800, "WCDMA VI 800", "WCDMA 800"},
    {ZOP_BAND_WCDMA_2600, "WCDMA VII 2600", "WCDMA 2600"},
    {ZOP_BAND_WCDMA_900, "WCDMA VIII 900", "WCDMA 900"},
    {ZOP_BAND_WCDMA_1700_IX, "WCDMA IX 1700", "WCDMA 1700 (IX)"},
    {110, "WLAN US 2400", "WLAN US 2400"},
    {111, "WLAN JAPAN 2400", "WLAN Japan 2400"},
    {112, "WLAN EUROPE 2400", "WLAN Europe 2400"},
    {113, "WLAN FRANCE 2400", "WLAN France 2400"},
    {114, "WLAN SPAIN 2400", "WLAN Spain 2400"},
    {115, "WLAN US 5000", "WLAN US 5000"},
    {116, "WLAN JAPAN 5000", "WLAN Japan 5000"},
    {117, "WLAN EUROPE 5000", "WLAN Europe 5000"},
    {118, "WLAN FRANCE 5000", "WLAN France 5000"},
    {119, "WLAN SPAIN 5000", "WLAN Spain 5000"},
};

inline constexpr StateWord SYSTEM_MODES[] = {
    {ZOP_SYSTEM_NONE, "None", "none"},    {ZOP_SYSTEM_NO_SERVICE, "No service", "no service"},
    {ZOP_SYSTEM_AMPS, "AMPS", "AMPS"},    {ZOP_SYSTEM_CDMA, "CDMA", "CDMA"},
    {ZOP_SYSTEM_GSM, "GSM", "GSM"},       {ZOP_SYSTEM_HDR, "HDR", "HDR"},
    {ZOP_SYSTEM_WCDMA, "WCDMA", "WCDMA"}, {ZOP_SYSTEM_GPS, "GPS", "GPS"},
    {ZOP_SYSTEM_GW, "GW", "GSM/WCDMA"},   {ZOP_SYSTEM_WLAN, "WLAN", "WLAN"},
};

inline constexpr StateWord DATA_SERVICES[] = {
    {ZOP_DATA_GPRS, "GPRS", "GPRS"},
    {ZOP_DATA_EDGE, "EDGE", "EDGE"},
    {ZOP_DATA_WCDMA, "WCDMA", "WCDMA"},
    {ZOP_DATA_HSDPA, "HSDPA", "HSDPA"},
};

inline constexpr StateWord SERVICES[] = {
    {ZOP_SERVICE_NONE, "None", "none"},
    {ZOP_SERVICE_NO_SERVICE, "No service", "no service"},
    {ZOP_SERVICE_LIMITED, "Limited service", "limited"},
    {ZOP_SERVICE_FULL, "Service", "full"},
    {ZOP_SERVICE_LIMITED_REGIONAL, "Limited regional", "limited regional"},
    {ZOP_SERVICE_POWER_SAVE, "Power save", "power save"},
};

inline constexpr StateWord REGISTRATIONS[] = {
    {ZOP_REGISTRATION_NONE, "None", "not registered"},
    {ZOP_REGISTRATION_SUCCESS, "Success", "registered"},
    {ZOP_REGISTRATION_FAILED, "Fail", "failed"},
    {ZOP_REGISTRATION_NO_NETWORK, "No network", "no network"},
};

inline constexpr StateWord CALLS[] = {
    {ZOP_CALL_NONE, "None", "none"},
    {ZOP_CALL_IDLE, "Idle", "idle"},
    {ZOP_CALL_ORIGINATING, "Originating", "originating"},
    {ZOP_CALL_INCOMING, "Incoming", "incoming"},
    {ZOP_CALL_ORIGINATING_INCOMING, "Orig incoming", "originating, incoming"},
    {ZOP_CALL_CONVERSATION, "Conversation", "conversation"},
    {ZOP_CALL_RELEASE, "Release", "release"},
    {ZOP_CALL_RECALL_PENDING, "Recall RSP pend", "recall pending"},
};

// The module's names tell an attach to the packet network from the other one by their item only.
inline constexpr StateWord MM_RESULTS[] = {
    {ZOP_ATTACH_NOT_AVAILABLE, "Not available", "not available"},
    {ZOP_MM_ATTACH_ACCEPTED, "Attach accept", "attach accepted"},
    {ZOP_MM_ATTACH_REJECTED, "Attach reject", "attach rejected"},
    {ZOP_LA_UPDATE_ACCEPTED, "LU update", "location update accepted"},
    {ZOP_LA_UPDATE_REJECTED, "LU reject", "location update rejected"},
    {ZOP_RA_UPDATE_ACCEPTED, "RA update accept", "routing area update accepted"},
    {ZOP_RA_UPDATE_REJECTED, "RA update reject", "routing area update rejected"},
};
inline constexpr StateWord GMM_RESULTS[] = {
    {ZOP_ATTACH_NOT_AVAILABLE, "Not available", "not available"},
    {ZOP_ATTACH_ACCEPTED, "Attach accept", "attach accepted"},
    {ZOP_ATTACH_REJECTED, "Attach reject", "attach rejected"},
    {ZOP_RA_UPDATE_ACCEPTED, "RA update accept", "routing area update accepted"},
    {ZOP_RA_UPDATE_REJECTED, "RA update reject", "routing area update rejected"},
    {ZOP_LA_UPDATE_ACCEPTED, "LU update", "location update accepted"},
    {ZOP_LA_UPDATE_REJECTED, "LU reject", "location update rejected"},
};

inline constexpr StateWord GMM_STATES[] = {
    {ZOP_GMM_NULL, "Null", "null"},
    {ZOP_GMM_DEREGISTERED, "Deregistered", "deregistered"},
    {ZOP_GMM_REGISTERING, "Registered init", "registering"},
    {ZOP_GMM_REGISTERED, "Registered", "registered"},
    {ZOP_GMM_DEREGISTERING, "Deregistered init", "deregistering"},
    {ZOP_GMM_RA_UPDATING, "RA updating init", "routing area updating"},
    {ZOP_GMM_SERVICE_REQUEST, "Service request init", "service request"},
};

inline constexpr StateWord PDP_STATES[] = {
    {ZOP_PDP_INACTIVE, "Inactive", "inactive"},
    {ZOP_PDP_ACTIVE_PENDING, "Active pending", "active pending"},
    {ZOP_PDP_ACTIVE, "Active", "active"},
    {ZOP_PDP_MODIFY_PENDING, "Modify pending", "modify pending"},
    {ZOP_PDP_INACTIVE_PENDING, "Inactive pending", "inactive pending"},
};

inline constexpr StateWord NETWORK_MODES[] = {
    {ZOP_NETWORK_MODE_COMBINED, "CS PS combined attach mode", "combined attach"},
    {ZOP_NETWORK_MODE_SEPARATE, "CS PS separate attach mode", "separate attach"},
    {ZOP_NETWORK_MODE_SEPARATE_2G, "2G CS PS separate attach mode", "separate attach, 2G"},
    {ZOP_NETWORK_MODE_UNAVAILABLE, "Unavailable", "not available"},
};

inline constexpr StateWord PMM_MODES[] = {
    {ZOP_PMM_DETACHED, "Detached", "detached"},
    {ZOP_PMM_IDLE, "Idle", "idle"},
    {ZOP_PMM_CONNECTED, "Connected", "connected"},
};

inline constexpr StateWord SELECTION_MODES[] = {
    {ZOP_SELECTION_AUTOMATIC, "Automatic", "automatic"},
    {ZOP_SELECTION_MANUAL, "Manual", "manual"},
};

inline constexpr StateWord HSDPA_STATES[] = {
    {ZOP_HSDPA_INACTIVE, "Inactive", "inactive"},
    {ZOP_HSDPA_ACTIVE, "Active", "active"},
    {ZOP_HSDPA_SUSPENDED, "Suspend", "suspended"},
};

inline constexpr StateWord HSPA_SUPPORT[] = {
    {ZOP_HSPA_NONE, "None", "none"},
    {ZOP_HSPA_UNSUPPORTED, "HSDPA HSUPA unsupp", "not supported"},
    {ZOP_HSPA_HSDPA, "HSDPA supp", "HSDPA"},
    {ZOP_HSPA_HSUPA, "HSUPA supp", "HSUPA"},
    {ZOP_HSPA_HSDPA_HSUPA, "HSDPA HSUPA supp", "HSDPA and HSUPA"},
};

inline constexpr StateWord EGPRS_SUPPORT[] = {
    {ZOP_EGPRS_NONE, "None", "none"},
    {ZOP_EGPRS_NOT_AVAILABLE, "Not available", "not available"},
    {ZOP_EGPRS_AVAILABLE, "Available", "available"},
};

inline constexpr StateWord SIM_STATES[] = {
    {ZOP_SIM_NO_CARD, "No card", "no card"},
    {ZOP_SIM_INVALID_CARD, "Invalid card", "invalid card"},
    {ZOP_SIM_READY, "Valid", "ready"},
    {ZOP_SIM_NOT_INITIALISED, "Not init", "not initialised"},
    {ZOP_SIM_NOT_READY, "Not ready", "not ready"},
    {ZOP_SIM_REINITIALISING, "Card reinit", "reinitialising"},
    {ZOP_SIM_AVAILABLE, "Avail card", "card available"},
    {ZOP_SIM_ILLEGAL_CARD, "Illegal card", "illegal card"},
};

// After "PIN" in the report.
inline constexpr StateWord PIN_STATES[] = {
    {ZOP_PIN_UNKNOWN, " unknown", "unknown"},
    {ZOP_PIN_OKAY, " okay", "okay"},
    {ZOP_PIN_ENABLED, " enabled", "PIN required"},
    {ZOP_PIN_VERIFIED, " verified", "verified"},
    {ZOP_PIN_BLOCKED, " blocked", "blocked"},
    {ZOP_PIN_PERM_DISABLED, " perm disabled", "PIN disabled"},
    {ZOP_PIN_NOT_VALID, " not valid", "not valid"},
    {ZOP_PIN_NOT_INITIALISED, " not init", "not initialised"},
};

// Of a ring that woke the host. The module gives letters.
inline constexpr StateWord RING_ORIGINS[] = {
    {0, "S", "S"}, {1, "T", "T"}, {2, "R", "R"}, {3, "s", "s"}, {4, "W", "W"}, {5, "U", "U"},
};

// Of an attach or an update.
inline constexpr StateWord REJECT_CAUSES[] = {
    {ZOP_CAUSE_NONE, "No error", "no error"},
    {2, "IMSI unknown in HLR", "IMSI unknown in HLR"},
    {3, "Illegal MS", "illegal MS"},
    {4, "IMSI unknown in VLR", "IMSI unknown in VLR"},
    {5, "IMEI not accepted", "IMEI not accepted"},
    {6, "Illegal ME", "illegal ME"},
    {7, "GPRS services not allowed", "GPRS services not allowed"},
    {8, "GPRS and non-GPRS services not allowed", "GPRS and non-GPRS services not allowed"},
    {9, "MS identity not derived", "MS identity not derived"},
    {10, "Implicitly detached", "implicitly detached"},
    {11, "PLMN not allowed", "PLMN not allowed"},
    {12, "LA not allowed", "location area not allowed"},
    {13, "National roaming not allowed", "national roaming not allowed"},
    {14, "GPRS services not allowed in this PLMN", "GPRS services not allowed in this PLMN"},
    {15, "No suitable cells in LA", "no suitable cells in location area"},
    {16, "MSC temporarily not reachable", "MSC temporarily not reachable"},
    {17, "Network failure", "network failure"},
    {20, "MAC failure", "MAC failure"},
    {21, "Synch failure", "synch failure"},
    {22, "Congestion", "congestion"},
    {23, "GSM auth unaccepted", "GSM authentication unacceptable"},
    {32, "Service option not supported", "service option not supported"},
    {33, "Req serv opt not subscribed", "service option not subscribed"},
    {34, "Service opt out of order", "service option out of order"},
    {38, "Call cannot be identified", "call cannot be identified"},
    {40, "No PDP context activated", "no PDP context activated"},
    {48, "New cell entry retry - MIN", "retry on entry into a new cell, least"},
    {63, "New cell entry retry - MAX", "retry on entry into a new cell, most"},
    {95, "Semantically incorrect msg", "semantically incorrect message"},
    {96, "Invalid mandatory info", "invalid mandatory information"},
    {97, "Message type nonexistent", "message type non-existent"},
    {98, "Msg type not compatible protocol state", "message type not compatible with the state"},
    {99, "IE nonexistent", "information element non-existent"},
    {101, "Msg not compatible protocol state", "message not compatible with the state"},
    {ZOP_CAUSE_PROTOCOL_ERROR, "111 Unknown", "protocol error, unspecified"},
    {255, "Not available", "not available"},
};

// Of a data connection.
inline constexpr StateWord PDP_CAUSES[] = {
    {ZOP_CAUSE_NONE, "No error", "no error"},
    {1, "Unknown cause", "unknown cause"},
    {8, "Operator determined barring", "operator determined barring"},
    {25, "LLC SNDCP failure", "LLC or SNDCP failure"},
    {26, "Insufficient resources", "insufficient resources"},
    {27, "Missing or unknown APN", "missing or unknown APN"},
    {28, "Unknown PDP address or type", "unknown PDP address or type"},
    {29, "User authentication failed", "user authentication failed"},
    {30, "Activation rejected by GGSN", "activation rejected by GGSN"},
    {31, "Activation rejected unspecified", "activation rejected, unspecified"},
    {32, "Service option not supported", "service option not supported"},
    {33, "Service not subscribed", "service option not subscribed"},
    {34, "Service out of order", "service option out of order"},
    {35, "NSAPI already used", "NSAPI already used"},
    {36, "Regular deactivation", "regular deactivation"},
    {37, "QOS not accepted", "QoS not accepted"},
    {38, "Network failure", "network failure"},
    {39, "Reactivation required", "reactivation required"},
    {40, "Feature not supported", "feature not supported"},
    {41, "Semantic error in TFT", "semantic error in TFT"},
    {42, "Syntactic error in TFT", "syntactic error in TFT"},
    {43, "Unknown PDP context", "unknown PDP context"},
    {44, "Semantic error in filter", "semantic error in filter"},
    {45, "Syntactic error in filter", "syntactic error in filter"},
    {46, "PDP without TFT active", "PDP without TFT active"},
    {81, "Invalid trans ID", "invalid transaction identity"},
    {95, "Semantic incorrect mesg", "semantically incorrect message"},
    {96, "Invalid mandatory info", "invalid mandatory information"},
    {97, "Mesg type nonexistent", "message type non-existent"},
    {98, "Mesg type not compatible", "message type not compatible with the state"},
    {99, "IE nonexistent", "information element non-existent"},
    {100, "Conditional IE error", "conditional information element error"},
    {101, "Mesg not compatible", "message not compatible with the state"},
    {ZOP_CAUSE_PROTOCOL_ERROR, "Protocol error", "protocol error, unspecified"},
    {112, "APN type conflict", "APN type conflict"},
};

}  // namespace records
