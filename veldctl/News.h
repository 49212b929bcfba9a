#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "veldctl/Event.h"
#include "veldctl/Folders.h"
#include "veldctl/Listener.h"

/// Compares the message folders with the files that were reported, and reports each change as an event.
class News {
 public:
  /// The state of a file when it was last reported.
  struct Known {
    std::int64_t changed;  ///< see Message
    bool lacksParts;       ///< true if the message was concatenated and incomplete
    bool operator==(const Known& other) const;
  };
  using AllKnown = std::map<std::string, Known>;  ///< by folder and name, such as "sent/2026112514032200"

  /// `known` holds the files that were reported before. `folders` must outlive the object.
  News(const Folders& folders, AllKnown known) : folders_(folders), known_(std::move(known)) {}

  /// Counts all existing files as reported.
  void skip();

  /// Reports the new events in the order of their guids, and calls `afterEach` after each event. If the
  /// listener returns a result other than Reported, stops and returns this result.
  Listener::Result report(Listener& listener, const std::function<void()>& afterEach);

  const AllKnown& known() const { return known_; }

  static const std::vector<int> statuses;  ///< the folders that have events

 private:
  std::vector<FileName> listFiles();
  [[nodiscard]] std::optional<Event> eventOf(const FileName& file) const;
  [[nodiscard]] Listener::Result reportOne(const Event& event, Listener& listener);
  void remember(const Event& event);

  const Folders& folders_;
  AllKnown known_;
  std::string complained_;  ///< the last error that was printed about a folder
};
