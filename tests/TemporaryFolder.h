#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <utility>

inline void writeFile(const std::string& path, const std::string& content) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path) << content;
}

/// Returns the content of a file; empty if the file does not exist.
inline std::string readFile(const std::string& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// A temporary folder with the given files. The destructor removes the folder.
class TemporaryFolder {
 public:
  TemporaryFolder(std::initializer_list<std::pair<const char*, std::string>> files = {}) {
    char name[] = "/tmp/test-XXXXXX";
    path = mkdtemp(name);
    for (const auto& [file, content] : files) writeFile(path + "/" + file, content);
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path;
};
