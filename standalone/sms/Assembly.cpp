#include "standalone/sms/Assembly.h"

#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <tuple>

#include "standalone/sms/Alphabet.h"

namespace Standalone {
namespace {
constexpr std::int64_t partsTimeout = 72 * 3600;  // seconds within which all parts of a message must arrive

// The parts of one message that have arrived.
struct Group {
  std::vector<const Stored*> stored;
  std::map<unsigned, Part> parts;  // by number
};

Message messageOf(const Group& group) {
  Message message;
  message.read = true;
  for (const Stored* const each : group.stored) {
    message.id += (message.id.empty() ? "" : ";") + partId(*each);
    message.read = message.read && each->read;
  }
  return message;
}

std::string contentOf(const Group& group) {
  std::string content;
  for (const auto& [number, part] : group.parts) content += part.content;
  return content;
}

std::string incompleteLine(const Group& group, const Part& first) {
  std::string numbers;
  for (const auto& [number, part] : group.parts)
    numbers += (numbers.empty() ? "" : ", ") + std::to_string(number);
  std::string text = "Incomplete message: part " + numbers + " of " + std::to_string(first.count) +
                     ", octets " + toHex(contentOf(group));
  if (first.alphabet != Part::Alphabet::Data) text += ", text: " + textOf(first.alphabet, contentOf(group));
  return text;
}

std::string textOf(const Group& group) {
  const Part& first = group.parts.begin()->second;
  if (group.parts.size() < first.count) return incompleteLine(group, first);
  if (first.alphabet == Part::Alphabet::Data) return dataLine(contentOf(group));
  return textOf(first.alphabet, contentOf(group));
}

Message unreadable(const Stored& stored) {
  Message message = messageOf({{&stored}, {}});
  message.text = "Message that cannot be read: " + stored.pdu;
  return message;
}

bool isReady(const Group& group, std::int64_t now) {
  const Part& first = group.parts.begin()->second;
  std::int64_t latest = first.sent;
  for (const auto& [number, part] : group.parts) latest = std::max(latest, part.sent);
  return group.parts.size() == first.count || now - latest > partsTimeout;
}

// Returns false if the group has this part with other content. The part then belongs to a later message.
bool fits(const Group& group, const Part& part) {
  const auto found = group.parts.find(part.number);
  return found == group.parts.end() || found->second.content == part.content;
}

// Collects the parts of each message in a group. The groups are in the order of their first parts.
class Groups {
 public:
  void add(const Stored& stored, const Part& part) {
    const Key key(part.sender, part.wide, part.reference, part.count);
    const auto known = latest_.find(key);
    const bool joins = part.count > 1 && known != latest_.end() && fits(all_[known->second], part);
    const std::size_t at = joins ? known->second : all_.size();
    if (!joins) all_.emplace_back();
    if (part.count > 1) latest_[key] = at;
    all_[at].stored.push_back(&stored);
    all_[at].parts.emplace(part.number, part);
  }
  const std::vector<Group>& all() const { return all_; }

 private:
  using Key = std::tuple<std::string, bool, unsigned, unsigned>;
  std::vector<Group> all_;
  std::map<Key, std::size_t> latest_;  // the index in all_ of the latest group with this key
};
}  // namespace

std::string dataLine(const std::string& octets) {
  constexpr char push = 0x06;              // type of the WAP session's PDU
  constexpr unsigned char mmsType = 0xBE;  // application/vnd.wap.mms-message
  const bool isPush = octets.size() > 3 && octets[1] == push;
  const bool isMms = isPush && (static_cast<unsigned char>(octets[3]) == mmsType ||
                                octets.find("application/vnd.wap.mms-message") != std::string::npos);
  return (isMms ? "MMS notification, octets " : "8-bit data, octets ") + toHex(octets);
}

std::string partId(const Stored& stored) {
  std::uint32_t sum = 2166136261U;  // FNV-1a
  for (const char c : stored.pdu) sum = (sum ^ static_cast<unsigned char>(c)) * 16777619U;
  return stored.place + "," + std::to_string(sum);
}

std::vector<std::string> partsOf(const std::string& id) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin < id.size();) {
    const std::size_t end = std::min(id.find(';', begin), id.size());
    parts.push_back(id.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

std::vector<Message> assemble(const std::vector<Stored>& stored, std::int64_t now) {
  std::vector<Message> messages;
  Groups groups;
  for (const Stored& each : stored) {
    if (const std::optional<Part> part = readDeliver(each.pdu))
      groups.add(each, *part);
    else
      messages.push_back(unreadable(each));
  }
  for (const Group& group : groups.all()) {
    if (!isReady(group, now)) continue;
    Message message = messageOf(group);
    message.centre = group.parts.begin()->second.centre;
    message.sender = group.parts.begin()->second.sender;
    message.text = textOf(group);
    messages.push_back(message);
  }
  return messages;
}
}  // namespace Standalone
