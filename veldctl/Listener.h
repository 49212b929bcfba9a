#pragma once

#include <poll.h>

#include <string>
#include <vector>

#include "support/NonCopyable.h"
#include "veldctl/Event.h"

/// Who is told of events.
class Listener : private Orvel::NonCopyable {
 public:
  enum class Answer {
    Told,   ///< the event counts as told
    Later,  ///< it is to be told again after pause(), and what comes after it waits
    Gone    ///< nobody listens any more
  };

  virtual ~Listener() = default;
  virtual Answer tell(const Event& event) = 0;

  /// Seconds to wait after Later.
  [[nodiscard]] virtual unsigned pause() const { return 0; }

  /// The descriptors by which it shows between two events that nobody listens any more, and whether it is so,
  /// after poll(2) has looked at them.
  [[nodiscard]] virtual std::vector<pollfd> watched() const { return {}; }
  virtual bool isGone(const std::vector<pollfd>& /*polled*/) { return false; }
};

/// Prints a line on standard output for each event.
class Lines : public Listener {
 public:
  explicit Lines(bool isJson) : isJson_(isJson) {}

  Answer tell(const Event& event) override;
  [[nodiscard]] std::vector<pollfd> watched() const override;
  bool isGone(const std::vector<pollfd>& polled) override;

 private:
  const bool isJson_;
};

/// Prints a line, and waits until a line on standard input answers it.
class AnsweredLines final : public Lines {
 public:
  explicit AnsweredLines(bool isJson) : Lines(isJson) {}

  Answer tell(const Event& event) override;
  [[nodiscard]] std::vector<pollfd> watched() const override;
  bool isGone(const std::vector<pollfd>& polled) override;

 private:
  bool readMore();

  std::string early_;  // what came on standard input and answers no line yet
};

/// Runs a program for each event, one at a time: the event as JSON is its standard input, VELD_EVENT,
/// VELD_GUID, VELD_NUMBER and VELD_TEXT are in its environment. Status 0 counts as told. After any other the
/// pause grows from one second to five minutes.
class Program final : public Listener {
 public:
  explicit Program(std::string path) : path_(std::move(path)) {}

  Answer tell(const Event& event) override;
  [[nodiscard]] unsigned pause() const override { return pause_; }

 private:
  const std::string path_;
  unsigned pause_ = 0;
};
