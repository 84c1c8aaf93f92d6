#include "quorvane/developer/DockerListing.h"

#include "quorvane/base/Json.h"
#include "quorvane/developer/DockerNames.h"
#include "quorvane/developer/DockerSizeText.h"

#include <charconv>
#include <utility>

namespace quorvane {

namespace {

/// One line, whose members are all texts. What is not there is noticed once.
class Line {
 public:
  explicit Line(std::string_view text) {
    auto json = parsedJson(text);
    if (json && json->is_object()) json_ = *std::move(json);
    isWhole_ = json_.is_object();
  }

  std::string text(const char* name) {
    const auto found = isWhole_ ? json_.find(name) : json_.end();
    if (!isWhole_ || found == json_.end() || !found->is_string()) {
      isWhole_ = false;
      return {};
    }
    return found->get<std::string>();
  }

  template <class T>
  T need(std::optional<T> value) {
    if (!value) isWhole_ = false;
    return std::move(value).value_or(T());
  }

  void need(bool holds) { isWhole_ = isWhole_ && holds; }

  bool isWhole() const { return isWhole_; }

 private:
  Json json_;
  bool isWhole_ = false;
};

template <class Record, class Read>
DockerListing<Record> listingOf(std::string_view output, Read read) {
  DockerListing<Record> listing;
  for (const std::string_view each : linesOf(output)) {
    std::optional<Record> record = read(each);
    if (record) {
      listing.records.push_back(*std::move(record));
    } else {
      ++listing.undecodedCount;
    }
  }
  return listing;
}

std::optional<DockerImageRecord> image(std::string_view text) {
  Line line(text);
  DockerImageRecord record;
  record.id = line.text("ID");
  record.repository = line.text("Repository");
  record.tag = line.text("Tag");
  record.createdSince = line.text("CreatedSince");
  record.sizeBytes = line.need(dockerSize(line.text("Size")));
  line.need(isFullImageID(record.id));
  return line.isWhole() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<DockerContainerRecord> container(std::string_view text) {
  Line line(text);
  DockerContainerRecord record;
  record.id = line.text("ID");
  record.name = line.text("Names");
  record.imageName = line.text("Image");
  record.state = line.text("State");
  record.statusDetail = line.text("Status");
  record.createdSince = line.text("RunningFor");
  record.sizeBytes = dockerContainerSize(line.text("Size"));
  record.composeProject = composeProjectOf(line.text("Labels"));
  line.need(isFullContainerID(record.id));
  return line.isWhole() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<DockerVolumeRecord> volume(std::string_view text) {
  Line line(text);
  DockerVolumeRecord record;
  record.name = line.text("Name");
  record.driver = line.text("Driver");
  record.labels = line.text("Labels");
  line.need(!record.name.empty());
  return line.isWhole() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<DockerResourceKind> kindNamed(std::string_view type) {
  const std::string lowered = asciiLowered(type);
  if (lowered == "images") return DockerResourceKind::images;
  if (lowered == "containers") return DockerResourceKind::containers;
  if (lowered == "local volumes" || lowered == "volumes") return DockerResourceKind::volumes;
  if (lowered == "build cache") return DockerResourceKind::buildCache;
  return std::nullopt;
}

std::optional<DockerUsageLine> usage(std::string_view text) {
  Line line(text);
  DockerUsageLine usage;
  const auto kind = kindNamed(line.text("Type"));
  usage.kind = kind.value_or(DockerResourceKind::images);
  usage.totalCount = line.need(dockerCount(line.text("TotalCount")));
  usage.activeCount = line.need(dockerCount(line.text("Active")));
  usage.sizeBytes = line.need(dockerSize(line.text("Size")));
  return line.isWhole() && kind ? std::optional(usage) : std::nullopt;
}

}  // namespace

std::optional<std::int64_t> dockerCount(std::string_view text) {
  std::int64_t count = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc() || rest != text.data() + text.size() || count < 0) return std::nullopt;
  return count;
}

std::vector<std::string_view> linesOf(std::string_view output) {
  std::vector<std::string_view> lines;
  while (!output.empty()) {
    const std::size_t end = std::min(output.find('\n'), output.size());
    std::string_view line = output.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines.push_back(line);
    output.remove_prefix(std::min(end + 1, output.size()));
  }
  return lines;
}

DockerListing<DockerImageRecord> dockerImages(std::string_view output) {
  return listingOf<DockerImageRecord>(output, image);
}

DockerListing<DockerContainerRecord> dockerContainers(std::string_view output) {
  return listingOf<DockerContainerRecord>(output, container);
}

DockerListing<DockerVolumeRecord> dockerVolumes(std::string_view output) {
  return listingOf<DockerVolumeRecord>(output, volume);
}

DockerListing<DockerUsageLine> dockerUsageLines(std::string_view output) {
  return listingOf<DockerUsageLine>(output, usage);
}

DockerListing<std::string> dockerTexts(std::string_view output) {
  return listingOf<std::string>(output, [](std::string_view line) -> std::optional<std::string> {
    auto text = recordFromText<std::string>(line);
    if (!text) return std::nullopt;
    return *std::move(text);
  });
}

}  // namespace quorvane
