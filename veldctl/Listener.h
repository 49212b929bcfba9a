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
    Retry,     ///< the event must be reported again after pause(), before any later event
    Gone       ///< the listener has ended
  };

  virtual ~Listener() = default;
  virtual Result report(const Event& event) = 0;

  /// Returns the seconds to wait after Retry.
  [[nodiscard]] virtual unsigned pause() const { return 0; }

  /// Returns the file descriptors to poll between two events. After poll(2), the caller passes the
  /// results to isGone(), which returns true if the listener has ended.
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

/// Prints a line for each event, and waits until a line on standard input acknowledges the event.
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

/// Runs a program for each event, one event at a time. The program gets the event as JSON on standard input,
/// and in its environment VELD_EVENT, VELD_GUID, VELD_NUMBER and VELD_TEXT. If it exits with status 0, the
/// event counts as reported. After each other exit status the pause doubles, from one second to five minutes.
class Program final : public Listener {
 public:
  explicit Program(std::string path) : path_(std::move(path)) {}

  Result report(const Event& event) override;
  [[nodiscard]] unsigned pause() const override { return pause_; }

 private:
  const std::string path_;
  unsigned pause_ = 0;
};
