// Runs one fuzz target over its corpus: each file, and each beginning of the small ones, for parsers trip
// over ends.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr std::size_t truncatedUpTo = 1024;

// The input lies in memory of exactly its size, so that the address sanitizer sees a read past its end.
void feed(const std::string& text, std::size_t size) {
  const auto exact = std::make_unique<std::uint8_t[]>(size);
  std::copy_n(text.begin(), size, exact.get());
  LLVMFuzzerTestOneInput(exact.get(), size);
}

TEST(FuzzCorpus, IsSurvived) {
  std::size_t inputs = 0;
  for (const auto& entry : std::filesystem::directory_iterator(QUORVANE_CORPUS_DIR)) {
    std::cout << entry.path().filename() << std::endl;  // the last one printed is the one that crashed
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    feed(text, text.size());
    const std::size_t prefixes = text.size() <= truncatedUpTo ? text.size() : 0;
    for (std::size_t size = 0; size < prefixes; ++size) feed(text, size);
    ++inputs;
  }
  EXPECT_GT(inputs, 0U) << "no corpus in " << QUORVANE_CORPUS_DIR;
}

}  // namespace
