// The local API: veld-api FOLDER, where FOLDER has the settings and the commands. systemd starts it for each
// connection. It answers one request on the socket, which is its standard input, and then runs the command.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "standalone/api/Answer.h"
#include "standalone/api/Http.h"

using namespace Standalone;

namespace {
constexpr unsigned requestSeconds = 10;

// Closes the connection, so that the client does not wait for the end of the command.
void hangUp() {
  shutdown(STDIN_FILENO, SHUT_RDWR);
  close(STDIN_FILENO);
  open("/dev/null", O_RDONLY);
}
}  // namespace

int main(int count, char** words) {
  if (count != 2) {
    std::cerr << "usage: veld-api FOLDER, with a connection as standard input\n";
    return EXIT_FAILURE;
  }
  alarm(requestSeconds);  // ends the process if the client does not send a whole request
  const std::optional<HttpRequest> request = readRequest(STDIN_FILENO);
  const Answer answer = request ? answerTo(*request, words[1]) : answerToMalformed();
  const bool answered = writeAnswer(STDIN_FILENO, answer.code, answer.result);
  alarm(0);
  hangUp();
  if (answered && !answer.program.empty()) runProgram(answer, words[1]);
  return EXIT_SUCCESS;
}
