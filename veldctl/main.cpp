#include "provider/SmsUtilsProvider.h"
#include "storage/MessageStore.h"
#include "veldctl/CommandLine.h"

int main(int count, char** words) {
  return runCommandLine(count, words, {messageFolder, stagingFolder, sendLog});
}
