#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "veldctl/Event.h"
#include "veldctl/Folders.h"
#include "veldctl/Listener.h"

/// What has happened in the message folders since it was last told.
class News {
 public:
  struct Known {
    std::int64_t changed;  ///< see Message
    bool lacksParts;       ///< parts of a long message were missing
    bool operator==(const Known& other) const;
  };
  using AllKnown = std::map<std::string, Known>;  ///< by folder and name, as in "sent/2026112514032200"

  /// `folders` outlives the object.
  News(const Folders& folders, AllKnown known) : folders_(folders), known_(std::move(known)) {}

  /// Takes what lies in the folders now as told.
  void skip();

  /// Tells what is new, by guid, until the listener answers other than Told, and returns the last answer.
  /// `afterEach` runs after each event that was told.
  Listener::Answer tell(Listener& listener, const std::function<void()>& afterEach);

  const AllKnown& known() const { return known_; }

  static const std::vector<int> statuses;  ///< of the folders that it looks at

 private:
  std::vector<FileName> look();
  [[nodiscard]] std::optional<Event> changeOf(const FileName& file) const;
  [[nodiscard]] Listener::Answer tellOf(const Event& event, Listener& listener);
  void know(const Event& event);

  const Folders& folders_;
  AllKnown known_;
  std::string complained_;
};
