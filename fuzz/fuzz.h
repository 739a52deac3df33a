// What the fuzzers share. Each is a program of libFuzzer's that hands what it makes up to one
// reader of the component; `scripts/fuzz` builds and runs them. A crash, a sanitizer's finding and
// a broken promise all end the program and leave the input behind.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace vlout::fuzz {

// Ends the program when something that must hold does not.
inline void require(bool holds, std::string_view what) {
  if (holds) return;
  std::fprintf(stderr, "broken promise: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

// A folder of this process's own, in memory where the system has such a place.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = std::filesystem::exists("/dev/shm") ? "/dev/shm/vlout-fuzz-XXXXXX"
                                                           : "/tmp/vlout-fuzz-XXXXXX";
    require(mkdtemp(name.data()) != nullptr, "a scratch folder can be made");
    path_ = name;
  }
  ~ScratchFolder() { std::filesystem::remove_all(path_); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline const std::filesystem::path& scratchFolder() {
  static const ScratchFolder folder;
  return folder.path();
}

inline void writeFile(const std::filesystem::path& file, std::string_view content) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

// What each fuzzer does with one input; a clean refusal returns.
void tryInput(std::string_view input);

}  // namespace vlout::fuzz

extern "C" inline __attribute__((used)) int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                                                   std::size_t size) {
  vlout::fuzz::tryInput({reinterpret_cast<const char*>(data), size});
  return 0;
}
