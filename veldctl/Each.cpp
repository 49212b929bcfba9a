#include "veldctl/Each.h"

#include <iostream>
#include <system_error>

#include "storage/MessageStatus.h"
#include "veldctl/Output.h"

namespace {
using namespace MessageStatus;

std::string faultOf(const Lookup& found) {
  if (!found.error.empty()) return found.error;
  if (!found.message) return noSuchMessage;
  switch (found.message->status) {
    case Sending:
      return "it is queued already";
    case Sent:
      return "it was sent already";
    case Received:
      return "it is a received message";
    default:
      return found.message->fault;
  }
}

std::string attempt(const Request& request, const std::string& guid, Act act) {
  try {
    return act(request, guid);
  } catch (const std::system_error& error) {
    return error.what();
  }
}

void print(const std::string& guid, const std::string& fault, bool isJson) {
  Json::Value row;
  row["guid"] = guid;
  row["fault"] = fault;
  if (isJson)
    std::cout << Output::line(row) << '\n';
  else if (!fault.empty())
    Output::complain(guid + ": " + fault);
}
}  // namespace

int forEachGuid(const Request& request, Act act) {
  ExitStatus status = Done;
  for (const std::string& guid : request.words) {
    const std::string fault = attempt(request, guid, act);
    print(guid, fault, request.isJson());
    if (!fault.empty()) status = Bad;
  }
  return status;
}

Lookup findFailed(const Folders& folders, const std::string& guid) {
  Lookup found = folders.find(guid, {Failed, Sending, Sent, Received});
  const std::string fault = faultOf(found);
  if (!fault.empty()) return {std::nullopt, fault};
  return found;
}
