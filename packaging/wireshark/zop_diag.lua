-- Wireshark dissector of the modem's DIAG port and of the download protocols of its boot ROM and
-- its programmer, for captures of zopctl --capture (link type USER0). It shows requests and answers
-- by name; the build inserts the names of requests and the words of states.

local requests = {}  -- protocol -> "CC SS" or "CC --" -> name
local function request(protocol, command, subcommand, name)
  requests[protocol] = requests[protocol] or {}
  requests[protocol][command .. " " .. subcommand] = name
end
-- @REQUESTS@

local FLAG, ESCAPE, ESCAPE_BIT = 0x7E, 0x7D, 0x20
local VENDOR, NV_READ, NV_WRITE = 0xCF, 0x26, 0x27
local ERRORS = {
  [19] = "bad command", [20] = "bad parameter", [21] = "bad length", [24] = "bad mode",
  [66] = "locked", [71] = "security",
}
local NV_ITEMS = {
  [10] = "preferred mode", [850] = "preferred service domain", [5895] = "MGRF supported, 0 or 1",
  [16685] = "copy of the SIM PIN", [16687] = "acquisition band order",
}
-- States and causes by the name of their request or screen field, in the words of zopctl.
local WORDS = {}
-- @WORDS@
local NV_STATUS = { [0] = "good", [5] = "never written", [6] = "no such item" }
local EVENTS = {
  { 1, "call originated" }, { 2, "PDP context activated" }, { 4, "PDP context deactivated" },
  { 8, "call ended" },
}
local REPLIES = {
  ["boot-rom"] = {
    [0x02] = "ack", [0x03] = "nak", [0x08] = "parameters", [0x11] = "memory regions",
    [0x13] = "memory",
  },
  ["programmer"] = {
    [0x02] = "hello", [0x08] = "written", [0x0C] = "reset", [0x0D] = "error", [0x0E] = "log",
    [0x16] = "closed", [0x18] = "security mode", [0x1A] = "partition table", [0x1C] = "opened",
  },
}
local IMAGES = { [5] = "amss.mbn", [15] = "dbl.mbn", [16] = "osbl.mbn", [17] = "fsbl.mbn" }

local zop = Proto("zop", "Modem DIAG port")
local f = {
  name = ProtoField.string("zop.name", "Name"),
  protocol = ProtoField.string("zop.protocol", "Protocol"),
  check = ProtoField.string("zop.check", "Frame"),
  command = ProtoField.uint8("zop.command", "Command", base.HEX),
  subcommand = ProtoField.uint8("zop.subcommand", "Subcommand", base.HEX),
  status = ProtoField.uint16("zop.status", "Status"),
  error = ProtoField.uint8("zop.error", "Error answer", base.DEC, ERRORS),
  data = ProtoField.bytes("zop.data", "Data"),
  text = ProtoField.string("zop.text", "Text"),
  value = ProtoField.int32("zop.value", "Value"),
  nv_item = ProtoField.uint16("zop.nv.item", "NV item", base.DEC, NV_ITEMS),
  nv_status = ProtoField.uint16("zop.nv.status", "NV status", base.DEC, NV_STATUS),
  event = ProtoField.string("zop.event", "Event"),
  request_in = ProtoField.framenum("zop.request", "Request in", base.NONE, frametype.REQUEST),
  time = ProtoField.relative_time("zop.time", "Time since the request"),
  address = ProtoField.uint32("zop.address", "Address", base.HEX),
  length = ProtoField.uint32("zop.length", "Length"),
  region = ProtoField.string("zop.region", "Region"),
  image = ProtoField.string("zop.image", "Image"),
}
-- The field-test screen: offset, kind, field.
local SCREEN = {
  { 5, "u8", "system_mode", "System mode" }, { 6, "u8", "service", "Service status" },
  { 7, "u8", "registration", "Registration" }, { 8, "text", "network", "Network", 32 },
  { 40, "text", "imei", "IMEI", 16 }, { 56, "text", "imsi", "IMSI", 16 },
  { 72, "i32", "channel", "Channel" }, { 76, "i32", "cell_id", "Cell identity" },
  { 80, "u8", "call", "Call state" }, { 81, "text", "mcc", "MCC", 3 },
  { 84, "text", "mnc", "MNC", 3 }, { 87, "text", "lac", "LAC", 4 },
  { 91, "i32", "rac", "RAC" }, { 95, "i32", "rssi", "RSSI" },
  { 99, "i32", "tx_power", "Transmit power" }, { 103, "i32", "band", "Band" },
  { 108, "u8", "mm_attach", "MM attach state" }, { 109, "u8", "mm_attach_error", "Its cause" },
  { 110, "u8", "mm_lu", "MM location update" }, { 111, "u8", "mm_lu_error", "Its cause" },
  { 112, "u8", "gmm_attach", "GMM attach state" }, { 113, "u8", "gmm_attach_error", "Its cause" },
  { 114, "u8", "gmm_rau", "GMM RAU state" }, { 115, "u8", "gmm_rau_error", "Its cause" },
  { 117, "u8", "pdp", "PDP state" }, { 118, "u8", "pdp_error", "Its cause" },
}
for _, row in ipairs(SCREEN) do
  local make = row[2] == "text" and ProtoField.string or ProtoField.int32
  f["screen_" .. row[3]] = make("zop.screen." .. row[3], row[4])
end
zop.fields = f
local bad_frame = ProtoExpert.new("zop.bad_frame", "No good frame", expert.group.CHECKSUM,
                                  expert.severity.WARN)
local refused = ProtoExpert.new("zop.refused", "The modem refuses", expert.group.RESPONSE_CODE,
                                expert.severity.NOTE)
zop.experts = { bad_frame, refused }

local direction_of = Field.new("frame.packet_flags_direction")
local TO_MODEM = 2
local request_of = {}  -- packet number -> its request; filled on the first pass
local last_request = nil

function zop.init()
  request_of, last_request = {}, nil
end

-- ---- frames ----

local function crc16(bytes, count)
  local crc = 0xFFFF
  for i = 0, count - 1 do
    crc = bit.bxor(crc, bytes:get_index(i))
    for _ = 1, 8 do
      local carry = bit.band(crc, 1)
      crc = bit.rshift(crc, 1)
      if carry == 1 then crc = bit.bxor(crc, 0x8408) end
    end
  end
  return bit.bxor(crc, 0xFFFF)
end

-- The payload of a frame, or nil and the fault.
local function unframe(buffer)
  local wire = buffer:bytes()
  local first, last = 0, wire:len() - 1
  if last < 0 then return nil, "the device is gone" end
  if last == 0 and wire:get_index(0) == FLAG then return nil, "a lone flag" end
  if wire:get_index(0) == FLAG then first = 1 end
  if wire:get_index(last) ~= FLAG then return nil, "cut" end
  local plain, count, i = ByteArray.new(), 0, first
  plain:set_size(last - first)
  while i < last do
    local byte = wire:get_index(i)
    if byte == ESCAPE and i + 1 < last then
      i = i + 1
      byte = bit.bxor(wire:get_index(i), ESCAPE_BIT)
    end
    plain:set_index(count, byte)
    count, i = count + 1, i + 1
  end
  if count < 3 then return nil, "too short" end
  plain:set_size(count)
  local check = plain:get_index(count - 2) + 256 * plain:get_index(count - 1)
  if crc16(plain, count - 2) ~= check then return nil, "bad check sequence" end
  plain:set_size(count - 2)
  return plain:tvb("Payload")
end

-- Up to a terminator, if there is one.
local function text_at(tvb, at, length)
  if at >= tvb:len() then return "" end
  return tvb:raw(at, math.min(length, tvb:len() - at)):match("^[^%z]*")
end

-- ---- requests ----

-- The protocol of a request: those of the download protocols open with a flag.
local function protocol_of(buffer, tvb)
  if buffer(0, 1):uint() ~= FLAG then return "diag" end
  local code = tvb(0, 1):uint()
  if code == 0x07 then return tvb:len() > 1 and "programmer" or "boot-rom" end
  local key = string.format("%02x --", code)
  return requests["boot-rom"][key] and "boot-rom" or "programmer"
end

local function name_of_request(protocol, tvb)
  local command = string.format("%02x", tvb(0, 1):uint())
  local subcommand = tvb:len() > 1 and string.format("%02x", tvb(1, 1):uint()) or "--"
  local names = requests[protocol]
  return names[command .. " " .. subcommand] or names[command .. " --"] or "unknown"
end

-- ---- DIAG ----

local function show_nv(tvb, tree, is_request)
  local item = tvb(1, 2):le_uint()
  tree:add_le(f.nv_item, tvb(1, 2))
  local words = string.format(" item %d%s", item, NV_ITEMS[item] and " (" .. NV_ITEMS[item] .. ")" or "")
  if not is_request and tvb:len() >= 133 then
    tree:add_le(f.nv_status, tvb(131, 2))
    local status = tvb(131, 2):le_uint()
    words = words .. ", " .. (NV_STATUS[status] or "status " .. status)
  end
  return words
end

-- " (full)"; empty when there is no word. A byte may hold a negative number.
local function in_words(name, value)
  local words = WORDS[name]
  local word = words and (words[value] or words[value - 256])
  return word and " (" .. word .. ")" or ""
end

local function show_screen(tvb, tree)
  for _, row in ipairs(SCREEN) do
    local at, kind, field = row[1], row[2], f["screen_" .. row[3]]
    local width = row[5] or (kind == "u8" and 1 or 4)
    if at + width <= tvb:len() then
      local range = tvb(at, width)
      if kind == "text" then tree:add(field, range, text_at(tvb, at, width))
      else
        local value = kind == "u8" and range:uint() or range:le_int()
        tree:add(field, range, value):append_text(in_words(row[3], value))
      end
    end
  end
end

local function show_events(tvb, tree)
  local flags, words = tvb(5, 1):uint(), ""
  for _, row in ipairs(EVENTS) do
    if bit.band(flags, row[1]) ~= 0 then
      tree:add(f.event, tvb(5, 1), row[2])
      words = words .. ": " .. row[2]
    end
  end
  return words
end

local TEXTS = { imei = 16, imsi = 16, iccid = 20, phone_number = 36, hardware = 20, firmware = 20,
                mcc = 3, mnc = 3, location_area = 14, network_name = 255 }

local function show_vendor_answer(name, tvb, tree)
  if tvb:len() < 5 then return "" end
  tree:add_le(f.status, tvb(3, 2))
  local status = tvb(3, 2):le_uint()
  if status ~= 0 then
    tree:add_proto_expert_info(refused)
    return " status " .. status
  end
  if name == "screen" then
    show_screen(tvb, tree)
  elseif name == "events" and tvb:len() > 5 then
    return show_events(tvb, tree)
  elseif TEXTS[name] then
    local text = text_at(tvb, 5, TEXTS[name])
    tree:add(f.text, tvb(5), text)
    return ": " .. text
  elseif name == "sim_status" and tvb:len() > 8 then
    local state, lock = tvb(6, 1):uint(), tvb(7, 1):uint()
    tree:add(f.value, tvb(6, 1), state):append_text(in_words("sim_status", state))
    tree:add(f.value, tvb(7, 1), lock):append_text(in_words("sim_lock", lock))
    return string.format(": %d%s, %d%s", state, in_words("sim_status", state), lock,
                         in_words("sim_lock", lock))
  elseif tvb:len() == 6 or tvb:len() == 7 or (tvb:len() == 9 and name == "cell_id") then
    local range = tvb(5)
    local value = range:len() == 1 and range:uint() or range:le_int()
    tree:add(f.value, range, value):append_text(in_words(name, value))
    return ": " .. value .. in_words(name, value)
  elseif tvb:len() == 9 then  -- a state and its cause
    local state, cause = tvb(5, 2):le_int(), tvb(7, 2):le_int()
    local state_words, cause_words = in_words(name, state), in_words(name .. "_error", cause)
    tree:add_le(f.value, tvb(5, 2)):append_text(state_words)
    tree:add_le(f.value, tvb(7, 2)):append_text(cause_words)
    return string.format(": %d%s, %d%s", state, state_words, cause, cause_words)
  elseif tvb:len() > 5 then
    tree:add(f.data, tvb(5))
  end
  return ""
end

local function show_diag(name, tvb, tree, is_request)
  local command = tvb(0, 1):uint()
  tree:add(f.command, tvb(0, 1))
  local has_subcommand = command == VENDOR or command == 0xD2 or command == 0xD5
  if has_subcommand and tvb:len() > 1 then tree:add(f.subcommand, tvb(1, 1)) end
  if (command == NV_READ or command == NV_WRITE) and tvb:len() >= 3 then
    return show_nv(tvb, tree, is_request)
  end
  if command == VENDOR and not is_request then return show_vendor_answer(name, tvb, tree) end
  if command == 0x7C and not is_request then
    local text = text_at(tvb, 12, 128)
    tree:add(f.text, tvb(), text)
    return ": " .. text
  end
  if tvb:len() > 3 then tree:add(f.data, tvb(has_subcommand and 3 or 1)) end
  return ""
end

-- ---- download protocols ----

local function show_regions(tvb, tree)
  local at, words = 3, ""
  while at + 9 < tvb:len() do
    local description = text_at(tvb, at + 9, tvb:len())
    local name_at = at + 9 + #description + 1
    if name_at >= tvb:len() then break end
    local name = text_at(tvb, name_at, tvb:len())
    local text = string.format("%s: %d bytes at 0x%08x, %s", name, tvb(at + 5, 4):uint(),
                               tvb(at + 1, 4):uint(), description)
    tree:add(f.region, tvb(at, 9), text)
    words = words .. " " .. name
    at = name_at + #name + 1
  end
  return words
end

-- An address and the data after it; the boot ROM's fields are big-endian, the programmer's little.
local function show_block(tvb, tree, big_endian, data_at)
  if tvb:len() < 5 then return "" end
  local range = tvb(1, 4)
  if big_endian then tree:add(f.address, range) else tree:add_le(f.address, range) end
  local address = big_endian and range:uint() or range:le_uint()
  local length = tvb:len() - data_at
  if data_at == 7 and tvb:len() == 7 then length = tvb(5, 2):uint() end
  if length > 0 then tree:add(f.length, length) end
  return string.format(" 0x%08x%s", address, length > 0 and ", " .. length .. " bytes" or "")
end

local function show_download(protocol, tvb, tree, is_request)
  local code = tvb(0, 1):uint()
  tree:add(f.command, tvb(0, 1))
  if protocol == "boot-rom" then
    if code == 0x11 and not is_request then return show_regions(tvb, tree) end
    if code == 0x0F or code == 0x12 or code == 0x13 then return show_block(tvb, tree, true, 7) end
    if code == 0x05 then return show_block(tvb, tree, true, 5) end
    return ""
  end
  if (code == 0x07 and is_request) or (code == 0x08 and not is_request) then
    return show_block(tvb, tree, false, 5)
  end
  if tvb:len() < 2 then return "" end
  local byte = tvb(1, 1):uint()
  if code == 0x1B then
    tree:add(f.image, tvb(1, 1), IMAGES[byte] or "?")
    return " " .. (IMAGES[byte] or "type " .. byte)
  end
  if code == 0x19 then
    tree:add(f.length, tvb:len() - 2)
    return byte == 0 and "" or " overrides the modem's"
  end
  if code == 0x1A or code == 0x1C then
    tree:add(f.status, tvb(1, 1))
    if byte ~= 0 then tree:add_proto_expert_info(refused) end
    return " status " .. byte
  end
  return ""
end

-- ---- a packet ----

local function remember(pinfo, is_request, this)
  if pinfo.visited then return end
  if is_request then last_request = this end
  request_of[pinfo.number] = is_request and this or last_request
end

function zop.dissector(buffer, pinfo, tree)
  local direction = direction_of()
  local is_request = direction ~= nil and direction.value == TO_MODEM
  pinfo.cols.protocol = "DIAG"
  pinfo.cols.src = is_request and "host" or "modem"
  pinfo.cols.dst = is_request and "modem" or "host"
  local branch = tree:add(zop, buffer())
  local tvb, fault = unframe(buffer)
  if tvb == nil then
    branch:add(f.check, fault)
    if fault ~= "a lone flag" then branch:add_proto_expert_info(bad_frame) end
    pinfo.cols.info = fault
    return
  end
  branch:add(f.check, "good")
  if is_request then
    local protocol = protocol_of(buffer, tvb)
    remember(pinfo, true, { number = pinfo.number, time = pinfo.rel_ts, protocol = protocol,
                            name = name_of_request(protocol, tvb) })
  else
    remember(pinfo, false)
  end
  local asked = request_of[pinfo.number] or { protocol = "diag", name = "unknown" }
  if not is_request and asked.number then
    branch:add(f.request_in, asked.number)
    branch:add(f.time, NSTime.new(0, (pinfo.rel_ts - asked.time) * 1e9))
  end
  local names = { diag = "DIAG", ["boot-rom"] = "DMSS", programmer = "STREAM" }
  pinfo.cols.protocol = names[asked.protocol]
  branch:add(f.protocol, asked.protocol)

  local name, words = asked.name, ""
  local code = tvb(0, 1):uint()
  if not is_request and asked.protocol == "diag" and ERRORS[code] then
    branch:add(f.error, tvb(0, 1))
    branch:add_proto_expert_info(refused)
    words = ": refused, " .. ERRORS[code]
  elseif asked.protocol == "diag" then
    if not is_request then name = name_of_request("diag", tvb) end
    words = show_diag(name, tvb, branch, is_request)
  else
    if not is_request then name = REPLIES[asked.protocol][code] or string.format("reply %02x", code) end
    words = show_download(asked.protocol, tvb, branch, is_request)
  end
  branch:add(f.name, name)
  branch:append_text(": " .. name .. words)
  pinfo.cols.info = (is_request and "> " or "< ") .. name .. words
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, zop)
