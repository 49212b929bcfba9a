#pragma once

#include <poll.h>

#include <string>
#include <vector>

#include "support/NonCopyable.h"
#include "veldctl/Event.h"

/// Receives the events that `follow` reports.
class Listener : private Orvel::NonCopyable {
 public:
  enum class Result {
    Reported,  ///< the event counts as reported
    Retry,     ///< report the event again after pause(); later events wait
    Gone       ///< the listener has ended
  };

  virtual ~Listener() = default;
  virtual Result report(const Event& event) = 0;

  /// Seconds to wait after Retry.
  [[nodiscard]] virtual unsigned pause() const { return 0; }

  /// The file descriptors to poll between two events. isGone() then gets the result of poll(2).
  [[nodiscard]] virtual std::vector<pollfd> watched() const { return {}; }
  virtual bool isGone(const std::vector<pollfd>& /*polled*/) { return false; }
};

/// Prints a line on standard output for each event.
class Lines : public Listener {
 public:
  explicit Lines(bool isJson) : isJson_(isJson) {}

  Result report(const Event& event) override;
  [[nodiscard]] std::vector<pollfd> watched() const override;
  bool isGone(const std::vector<pollfd>& polled) override;

 private:
  const bool isJson_;
};

/// Prints a line for each event and waits until a line on standard input acknowledges it.
class AcknowledgedLines final : public Lines {
 public:
  explicit AcknowledgedLines(bool isJson) : Lines(isJson) {}

  Result report(const Event& event) override;
  [[nodiscard]] std::vector<pollfd> watched() const override;
  bool isGone(const std::vector<pollfd>& polled) override;

 private:
  bool readMore();

  std::string unused_;  ///< input that has not acknowledged an event yet
};

/// Runs a program for each event, one at a time. Its standard input is the event as JSON; VELD_EVENT,
/// VELD_GUID, VELD_NUMBER and VELD_TEXT are in its environment. After exit status 0 the event counts as
/// reported. After any other status the pause grows, from one second to five minutes.
class Program final : public Listener {
 public:
  explicit Program(std::string path) : path_(std::move(path)) {}

  Result report(const Event& event) override;
  [[nodiscard]] unsigned pause() const override { return pause_; }

 private:
  const std::string path_;
  unsigned pause_ = 0;
};
