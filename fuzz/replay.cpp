// Runs a fuzz target over the files that are named, or that lie in the folders that are named.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void run_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

int run(int count, char** arguments) {
  int files = 0;
  for (int i = 1; i < count; ++i) {
    if (!std::filesystem::is_directory(arguments[i])) {
      run_file(arguments[i]);
      ++files;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
      run_file(entry.path());
      ++files;
    }
  }
  std::printf("%d inputs\n", files);
  return files == 0;  // a corpus that is not found tests nothing
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return run(count, arguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
