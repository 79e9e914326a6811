// Where the texts of the record end. A modem may fill a field, with no zero behind: what follows a
// network's name is the IMEI.
#include "report/text_fields.h"

#include <stdint.h>

#include "include/zop_diag_info.h"

struct TextField {
  size_t offset;
  size_t size;
};

// clang-format off
static constexpr TextField TEXT_FIELDS[] = {
    {offsetof(zop_diag_info, screen.network_name), sizeof gDiagInfo.screen.network_name},
    {offsetof(zop_diag_info, screen.imei),         sizeof gDiagInfo.screen.imei},
    {offsetof(zop_diag_info, screen.imsi),         sizeof gDiagInfo.screen.imsi},
    {offsetof(zop_diag_info, firmware),            sizeof gDiagInfo.firmware},
    {offsetof(zop_diag_info, hardware),            sizeof gDiagInfo.hardware},
    {offsetof(zop_diag_info, library),             sizeof gDiagInfo.library},
    {offsetof(zop_diag_info, phone_number),        sizeof gDiagInfo.phone_number},
    {offsetof(zop_diag_info, iccid),               sizeof gDiagInfo.iccid},
    {offsetof(zop_diag_info, local_address),       sizeof gDiagInfo.local_address},
    {offsetof(zop_diag_info, peer_address),        sizeof gDiagInfo.peer_address},
};
// clang-format on

size_t prv_text_room(const char* text) {
  const char* record = static_cast<const char*>(static_cast<const void*>(&gDiagInfo));
  if (text < record || text >= record + sizeof gDiagInfo) return PTRDIFF_MAX;
  size_t at = static_cast<size_t>(text - record);
  for (const TextField& field : TEXT_FIELDS) {
    size_t end = field.offset + field.size;
    if (at >= field.offset && at < end) return end - at;
  }
  return sizeof gDiagInfo - at;
}
