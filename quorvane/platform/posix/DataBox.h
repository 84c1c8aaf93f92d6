#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvane {

/// Collects what arrives through one pipe, up to a limit; what comes later is only counted. Belongs to one thread.
class DataBox {
 public:
  explicit DataBox(std::size_t limit) : limit_(limit) {}

  void append(std::string_view bytes) {
    const std::size_t kept = std::min(bytes.size(), limit_ - data_.size());
    data_.append(bytes.substr(0, kept));
    droppedBytes_ += bytes.size() - kept;
  }

  std::string takeData() { return std::move(data_); }
  std::uint64_t droppedBytes() const { return droppedBytes_; }

 private:
  std::size_t limit_;
  std::string data_;
  std::uint64_t droppedBytes_ = 0;
};

}  // namespace quorvane
