#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>

#include "standalone/api/StrictJson.h"
#include "tests/Testing.h"

using namespace Standalone;

namespace {
// The build defines PROGRAM, the path of veld-api, and SOURCES, the folder of its other installed files.
constexpr char command[] = R"({"recipients": ["+49170"], "args": ["a", "b c"]})";
constexpr char settings[] = R"({"smsCommands": {"enabled": true, "pingEnabled": true}})";

std::string post(const std::string& name, const std::string& body = command) {
  return "POST /api/command/" + name + " HTTP/1.1\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

// Runs veld-api with one connection.
class Api {
 public:
  Api(const TemporaryFolder& folder, const std::string& request) {
    int ends[2];
    socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
    process_ = fork();
    if (process_ == 0) {
      dup2(ends[1], STDIN_FILENO);
      const std::string path = "PATH=" + folder.path + "/bin:/usr/bin:/bin";
      const char* const environment[] = {path.c_str(), "SECRET=1", nullptr};
      execle(PROGRAM, PROGRAM, folder.path.c_str(), nullptr, environment);
      _exit(127);
    }
    close(ends[1]);
    socket_ = ends[0];
    send(socket_, request.data(), request.size(), MSG_NOSIGNAL);
  }
  ~Api() {
    close(socket_);
    end();
  }
  Api(const Api&) = delete;
  Api& operator=(const Api&) = delete;

  // Returns the body of the answer.
  std::string answer() const {
    std::string all;
    char piece[4096];
    for (ssize_t count; (count = recv(socket_, piece, sizeof piece, 0)) > 0;)
      all.append(piece, static_cast<std::size_t>(count));
    const std::size_t end = all.find("\r\n\r\n");
    return end == std::string::npos ? "" : all.substr(end + 4);
  }

  // Waits until veld-api waits for a lock. Returns false if veld-api ends first.
  bool waitsForALock() const {
    const std::string entry = " " + std::to_string(process_) + " ";
    siginfo_t info{};
    while (info.si_pid == 0) {
      std::istringstream locks(readFile("/proc/locks"));
      for (std::string line; std::getline(locks, line);)
        if (line.find("-> FLOCK") != std::string::npos && line.find(entry) != std::string::npos) return true;
      waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT);
    }
    return false;
  }

  void end() {
    if (process_ > 0) waitpid(process_, nullptr, 0);
    process_ = 0;
  }

 private:
  pid_t process_;
  int socket_;
};

// A folder with a veldctl that writes its arguments and input to a file, and with programs of commands.
struct ApiFolder : TemporaryFolder {
  explicit ApiFolder(const std::string& text = "echo \"$# $1 $2\"", const char* settingsText = settings)
      : TemporaryFolder{{"settings.json", settingsText},
                        {"bin/veldctl", "#!/bin/sh\n(echo \"$@\"; cat) >>${0%/*}/sent\n"},
                        {"commands.d/do_ping_through_sms", "#!/bin/sh\n" + text + "\n"},
                        {"commands.d/sms_restart", "#!/bin/sh\n"},
                        {"commands.d/own", "#!/bin/sh\n"},
                        {"commands.d/notes", "no program"}} {
    for (const char* const name :
         {"bin/veldctl", "commands.d/do_ping_through_sms", "commands.d/sms_restart", "commands.d/own"})
      chmod((path + "/" + name).c_str(), 0755);
  }

  std::string sent() const { return readFile(path + "/bin/sent"); }
};
}  // namespace

const Row<std::string, const char*> answerRows[] = {
    {"Settings", "GET /api/sms HTTP/1.1\r\n\r\n",
     R"({"code":200,"result":{"smsCommands":{"enabled":true,"pingEnabled":true}}})"},
    {"OtherPath", "GET /api/smsx HTTP/1.1\r\n\r\n", R"({"code":404,"result":"no such resource"})"},
    {"Command", post("do_ping_through_sms"), R"({"code":200,"result":null})"},
    {"CommandWithoutAKeyword", post("own"), R"({"code":200,"result":null})"},
    {"NoCommand", post("nothing"), R"({"code":404,"result":"no such command"})"},
    {"NoProgram", post("notes"), R"({"code":404,"result":"no such command"})"},
    {"NoName", post(""), R"({"code":404,"result":"no such command"})"},
    {"PathOutsideTheFolder", post("../bin/veldctl"), R"({"code":404,"result":"no such command"})"},
    {"SwitchedOff", post("sms_restart"), R"({"code":403,"result":"the command is switched off"})"},
    {"BadBody", post("do_ping_through_sms", "{}"), R"({"code":400,"result":"the body is not a command"})"},
    {"NotHttp", "hello\r\n\r\n", R"({"code":400,"result":"this is not an HTTP request"})"},
};
TEST_ROWS(Request, IsAnswered, answerRows) {
  const ApiFolder folder;
  const Api api(folder, GetParam().given);
  EXPECT_EQ(api.answer(), GetParam().expected);
}

TEST(FaultySettings, AreAnsweredWith500AndPermitNothing) {
  for (const char* const settingsText : {"{\"enabled\": true,}", "[]", ""}) {
    const ApiFolder folder("echo run", settingsText);
    for (const std::string& request : {std::string("GET /api/sms HTTP/1.1\r\n\r\n"), post("own")}) {
      Api api(folder, request);
      EXPECT_EQ(api.answer(), R"({"code":500,"result":"the settings cannot be read"})") << settingsText;
      api.end();
    }
    EXPECT_EQ(folder.sent(), "") << settingsText;
  }
}

TEST(InstalledSettings, PermitNothing) {
  const ApiFolder folder("", readFile(SOURCES "/settings.json").c_str());
  const Api settingsApi(folder, "GET /api/sms HTTP/1.1\r\n\r\n");
  std::string fault;
  EXPECT_EQ(parseStrictJson(settingsApi.answer(), fault).value_or(Json::Value())["result"]["enabled"], true);
  const Api api(folder, post("own"));
  EXPECT_EQ(api.answer(), R"({"code":403,"result":"the command is switched off"})");
}

const Row<const char*, const char*> sentRows[] = {
    {"Output", "echo \"$# $1 $2\"", "send +49170 -\n2 a b c"},
    {"Sender", "echo \"$SMS_SENDER\"", "send +49170 -\n+49170"},
    {"NoOtherEnvironment", "env | grep -vcE '^(PATH|SMS_SENDER|PWD|OLDPWD|SHLVL|_)='", "send +49170 -\n0"},
    {"Nothing", "", "send +49170 -\ndone"},
    {"Failure", "exit 1", "send +49170 -\nfailed"},
};
TEST_ROWS(Program, IsRunAndItsOutputIsQueued, sentRows) {
  const ApiFolder folder(GetParam().given);
  Api api(folder, post("do_ping_through_sms"));
  EXPECT_EQ(api.answer(), R"({"code":200,"result":null})");
  api.end();
  EXPECT_EQ(folder.sent(), GetParam().expected);
}

TEST(RunningProgram, DelaysTheNextProgramButNotItsAnswer) {
  const ApiFolder folder("read line <${0%/*}/../pipe; echo first");
  const std::string pipe = folder.path + "/pipe";
  mkfifo(pipe.c_str(), 0600);
  Api first(folder, post("do_ping_through_sms"));
  EXPECT_EQ(first.answer(), R"({"code":200,"result":null})");
  std::ofstream unlocked(pipe);  // waits until the program reads
  Api second(folder, post("own"));
  EXPECT_EQ(second.answer(), R"({"code":200,"result":null})");
  EXPECT_TRUE(second.waitsForALock());
  unlocked << "go\n" << std::flush;
  first.end();
  second.end();
  EXPECT_EQ(folder.sent(), "send +49170 -\nfirstsend +49170 -\ndone");
}

TEST(IncompleteRequest, RunsNoProgram) {
  const ApiFolder folder;
  const std::string whole = post("do_ping_through_sms");
  {
    const Api api(folder, whole.substr(0, whole.size() - 1));
  }
  EXPECT_EQ(folder.sent(), "");
}
