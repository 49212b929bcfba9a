#include <unistd.h>

#include <memory>

#include "veldctl/Commands.h"
#include "veldctl/FolderWatch.h"
#include "veldctl/Listener.h"
#include "veldctl/News.h"
#include "veldctl/Output.h"
#include "veldctl/StateFile.h"

namespace {
constexpr int longestWait = 30'000;  // milliseconds

std::unique_ptr<Listener> listenerOf(const Request& request) {
  if (request.has('x') && request.has('a')) throw Misuse("--exec and --ack exclude each other");
  if (request.has('x')) return std::make_unique<Program>(request.text('x'));
  const bool isJson = request.isJson() || isatty(STDOUT_FILENO) == 0;
  if (request.has('a')) return std::make_unique<AcknowledgedLines>(isJson);
  return std::make_unique<Lines>(isJson);
}

// Waits for a change in the folders. Returns false if the listener has ended.
bool waitForChange(FolderWatch& watch, Listener& listener) {
  std::vector<pollfd> polled = listener.watched();
  watch.wait(longestWait, polled);
  return !listener.isGone(polled);
}

void reportEvents(News& news, Listener& listener, StateFile* state, FolderWatch& watch) {
  const auto save = [&] {
    if (state != nullptr) state->writeSoon(news.known());
  };
  for (bool isListening = true; isListening;) {
    const Listener::Result result = news.report(listener, save);
    if (state != nullptr) state->write(news.known());
    if (result == Listener::Result::Gone) return;
    if (result == Listener::Result::Retry)
      sleep(listener.pause());
    else
      isListening = waitForChange(watch, listener);
  }
}
}  // namespace

int follow(const Request& request) {
  const std::unique_ptr<Listener> listener = listenerOf(request);
  for (const std::string& error : request.folders.names(News::statuses).errors) Output::complain(error);
  if (Output::complaints() > 0) return Bad;
  FolderWatch watch(request.folders, News::statuses);
  std::unique_ptr<StateFile> state;
  std::optional<News::AllKnown> known;
  if (request.has('s')) {
    state = std::make_unique<StateFile>(request.text('s'));
    known = state->read();
  }
  News news(request.folders, known.value_or(News::AllKnown()));
  if (!known) news.skip();
  reportEvents(news, *listener, state.get(), watch);
  return Done;
}
