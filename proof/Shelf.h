#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

/// The message folders that share one limit: the inbox folder, or those of the outbox.
class Shelf {
 public:
  Shelf(std::vector<std::string> boxes, std::size_t limit) : boxes_(std::move(boxes)), limit_(limit) {}

  /// The changes between two observations. A place is a box, a slash and a file name.
  struct Changes {
    std::vector<std::string> gone;  ///< places whose file is gone or replaced
    std::vector<std::string> came;  ///< places whose file is new
    std::set<std::string> before;   ///< names at the previous observation
    std::size_t limit;

    /// The names that the limit may have displaced since: the smallest, one for each message above the limit.
    /// `more`: messages that arrived in addition to the new files.
    std::set<std::string> displaced(std::size_t more) const;
  };
  Changes look();

  static std::string boxOf(const std::string& place) { return place.substr(0, place.find('/')); }
  static std::string nameOf(const std::string& place) { return place.substr(place.find('/') + 1); }
  static std::string pathOf(const std::string& place);

 private:
  using Versions = std::map<std::string, std::string>;

  std::vector<std::string> boxes_;
  std::size_t limit_;
  Versions versions_;  // by place
};
