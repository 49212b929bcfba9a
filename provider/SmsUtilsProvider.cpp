#include "provider/SmsUtilsProvider.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <utility>

#include "provider/Listing.h"
#include "provider/MultipartJoiner.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStore.h"
#include "support/Logger.h"
#include "support/SignalHold.h"

namespace {
namespace Key = MessageRecord::Key;

const std::string tool = smsTool;
const std::string sendFile = std::string(stagingFolder) + "/sms-tmp";
constexpr std::size_t pieceSize = 1024;  // bytes that one fgets() stores, including the terminating NUL

void logPipeError() { ORVEL_LOG(ERROR, "[SMS-UTILS] Pipe error: [%d][%s]", errno, std::strerror(errno)); }

std::vector<std::string> readLines(std::FILE* pipe) {
  const Orvel::SignalHold untilRead;
  std::vector<std::string> lines;
  char piece[pieceSize];
  while (std::fgets(piece, sizeof(piece), pipe) != nullptr) lines.emplace_back(piece);
  if (std::ferror(pipe) == 0) return lines;
  // Returns no lines, so that no message is deleted. The next pass lists all messages again.
  logPipeError();
  return {};
}

std::vector<std::string> listMessages() {
  std::FILE* const pipe = popen((tool + "list read").c_str(), "r");
  if (pipe == nullptr) {
    logPipeError();
    return {};
  }
  std::vector<std::string> lines = readLines(pipe);
  pclose(pipe);
  return lines;
}

void removeSendFile() {
  const std::string command = "rm " + sendFile;
  if (std::system(command.c_str()) != 0)
    ORVEL_LOG(ERROR, "Error to remove file %s: [%d][%s]", command.c_str(), errno, std::strerror(errno));
}

bool writeSendFile(const Json::Value& record) {
  std::ofstream file(sendFile);
  if (!file.is_open()) {
    ORVEL_LOG(ERROR, "Cannot open file [%s] to write: [%d][%s]", sendFile.c_str(), errno,
              std::strerror(errno));
    return false;
  }
  file << MessageRecord::member(record, Key::Message).asString().c_str();  // writes up to the first NUL
  file.close();
  if (file) return true;
  ORVEL_LOG(ERROR, "Cannot write file %s: [%d][%s]", sendFile.c_str(), errno, std::strerror(errno));
  removeSendFile();
  return false;
}
}  // namespace

SmsUtilsProvider::SmsUtilsProvider(ModemEvents* events) : events_(events) {
  if (std::system(("mkdir -p " + std::string(stagingFolder) + "/").c_str()) != 0)
    ORVEL_LOG(ERROR, "Cannot create dir: [%d][%s]", errno, std::strerror(errno));
}

std::vector<Json::Value> SmsUtilsProvider::receiveMessages() {
  // This call marks all messages as read, so that "list read" prints new and old messages.
  [[maybe_unused]] const int ignored = std::system((tool + "list unread > /dev/null").c_str());
  Listing listing = parseListing(listMessages(), [this](const std::string& guid) {
    return events_ != nullptr && events_->isTaken(guid);
  });
  std::vector<Json::Value> records = joinMultipartMessages(std::move(listing.records));
  if (events_ != nullptr && !records.empty()) events_->aboutToDelete(records);
  if (listing.foundMessage) {
    const int status = std::system((tool + "delete read").c_str());
    if (status != 0) ORVEL_LOG(ERROR, "[SMS-UTILS] Failed to delete SMS messages: [%d]", status);
  }
  return records;
}

bool SmsUtilsProvider::sendMessage(const Json::Value& message) {
  const std::string recipient = MessageRecord::member(message, Key::Recipient).asString();
  if (recipient.empty()) {
    ORVEL_LOG(INFO, "SMS recipient is empty");
    return false;
  }
  if (!writeSendFile(message)) return false;
  const std::string command =
      "bash -c '" + tool + "--verbose send -f " + sendFile + " " + recipient + " >> " + sendLog + " 2>&1'";
  ORVEL_LOG(INFO, "%s", command.c_str());
  if (events_ != nullptr) events_->aboutToSend();
  const int status = std::system(command.c_str());
  if (events_ != nullptr) events_->answered(status == 0);
  if (status != 0) ORVEL_LOG(ERROR, "Error to send SMS. Error: %d", status);
  removeSendFile();
  return status == 0;
}
