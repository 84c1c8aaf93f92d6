// Times programs against each other and judges them by bounds.
//
//   Timed {--job TITLE ROUNDS {--row NAME [WORD...] -- PROGRAM [ARGUMENT...]}...}...
//
// The programs of a job run in turn, once untimed and then ROUNDS times (A B C A B C ...), without a shell, their
// output thrown away. What other programs of the machine do thus falls on all of them alike, and each comparison is
// made within one round: what counts is the median over the rounds. Words of a row:
//
//   peer           what the other rows are compared with: the peer with the smallest median
//   of=NAME        compare with this earlier row instead
//   ratio=N        the wall time may be at most N times that of the other
//   more=N         the wall time may be at most N ms more than that of the other
//   memory=N       the peak of resident memory may be at most N MiB in any round
//   before=FILE    run this program before each run, untimed: to make what the row uses up
//   after=FILE     and this one after it: to see that the row did what it was to do
//
// Ends with 1 when a bound was missed, and with 2 when a program failed or the arguments are wrong.

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX wants it declared by whoever uses it

namespace {

/// One run of a program.
struct Sample {
  double wallMs = 0;
  double cpuMs = 0;      ///< of the program and of the children it waited for
  double memoryMiB = 0;  ///< the largest of them
};

struct Row {
  std::string name;
  bool isPeer = false;
  std::string other;  ///< the name of the row to compare with; empty: the fastest peer
  std::optional<double> ratio;
  std::optional<double> more;
  std::optional<double> memory;
  std::string before, after;   ///< programs; empty for none
  std::vector<char*> command;  ///< with the null at its end that posix_spawn wants
  std::vector<Sample> samples;
};

struct Job {
  std::string title;
  int rounds = 0;
  std::vector<Row> rows;
};

double milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

/// Starts the program with no input and no output; what it says of errors is shown unless the run is timed.
int start(pid_t& child, char* const* command, bool isTimed) {
  posix_spawn_file_actions_t actions;
  if (const int error = posix_spawn_file_actions_init(&actions); error != 0) return error;
  int error = posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  if (error == 0) error = posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  if (error == 0 && isTimed) error = posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  if (error == 0) error = posix_spawnp(&child, command[0], &actions, nullptr, command, environ);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

/// Nothing, with the reason on standard error, when the program cannot be started or does not end with 0.
std::optional<Sample> run(const std::string& name, char* const* command, bool isTimed) {
  const auto begin = std::chrono::steady_clock::now();
  pid_t child = 0;
  if (const int error = start(child, command, isTimed); error != 0) {
    fmt::print(stderr, "Timed: {}: {}\n", command[0], std::generic_category().message(error));
    return std::nullopt;
  }
  int status = 0;
  rusage usage{};
  while (wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {}
  const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - begin;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    fmt::print(stderr, "Timed: {} did not end with 0\n", name);
    return std::nullopt;
  }
  // Linux gives the peak in KiB. It is never below this program's own size when the child was started, some 4 MiB.
  return Sample{.wallMs = wall.count(),
                .cpuMs = milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime),
                .memoryMiB = static_cast<double>(usage.ru_maxrss) / 1024};
}

/// A program without arguments, beside a row; true when there is none.
bool runBeside(std::string program) {
  const std::array<char*, 2> command{program.data(), nullptr};
  return program.empty() || run(program, command.data(), /*isTimed=*/false);
}

std::optional<Sample> runRow(const Row& row, bool isTimed) {
  if (!runBeside(row.before)) return std::nullopt;
  auto sample = run(row.name, row.command.data(), isTimed);
  return runBeside(row.after) ? sample : std::nullopt;
}

bool measure(Job& job) {
  for (int round = 0; round <= job.rounds; ++round) {
    for (Row& row : job.rows) {
      const auto sample = runRow(row, round > 0);
      if (!sample) return false;
      if (round > 0) row.samples.push_back(*sample);
    }
  }
  return true;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::vector<double> column(const Row& row, double Sample::*field) {
  std::vector<double> values;
  values.reserve(row.samples.size());
  for (const Sample& sample : row.samples) values.push_back(sample.*field);
  return values;
}

double medianWall(const Row& row) { return median(column(row, &Sample::wallMs)); }

/// The row that `row` is compared with: null when there is no peer, or `row` is one.
const Row* rivalOf(const Job& job, const Row& row) {
  const Row* rival = nullptr;
  for (const Row& candidate : job.rows) {
    if (!row.other.empty()) {
      if (candidate.name == row.other) return &candidate;
    } else if (candidate.isPeer && !row.isPeer && (!rival || medianWall(candidate) < medianWall(*rival))) {
      rival = &candidate;
    }
  }
  return rival;
}

template <class Comparison>
double medianOfRounds(const Row& row, const Row& rival, Comparison comparison) {
  std::vector<double> values;
  values.reserve(row.samples.size());
  for (std::size_t round = 0; round < row.samples.size(); ++round) {
    values.push_back(comparison(row.samples[round].wallMs, rival.samples[round].wallMs));
  }
  return median(std::move(values));
}

/// Prints a table row by row and remembers whether all bounds held.
class Report {
 public:
  void title(const Job& job) {
    fmt::print("{}{}; {} rounds\n", isFirst_ ? "" : "\n", job.title, job.rounds);
    fmt::print("  {:<22} {:>26} {:>8} {:>8}  {:<26} {:>7}\n", "", "wall ms (min to max)", "cpu ms", "peak MiB",
               "measured", "at most");
    isFirst_ = false;
  }

  void row(const Job& job, const Row& row) {
    std::vector<double> wall = column(row, &Sample::wallMs);
    const std::vector<double> memory = column(row, &Sample::memoryMiB);
    const auto [least, most] = std::minmax_element(wall.begin(), wall.end());
    const double peak = *std::max_element(memory.begin(), memory.end());
    const std::string walls = fmt::format("{:.1f} ({:.1f} to {:.1f})", median(wall), *least, *most);
    line_ =
        fmt::format("  {:<22} {:>26} {:>8.1f} {:>8.1f}  ", row.name, walls, median(column(row, &Sample::cpuMs)), peak);
    isJudged_ = false;
    judgeTimes(job, row);
    if (row.memory) judge(fmt::format("{:.1f} MiB", peak), peak, *row.memory);
    if (!isJudged_) fmt::print("{}{}\n", line_, row.isPeer ? "peer" : "");
  }

  bool allHeld() const { return allHeld_; }

 private:
  void judgeTimes(const Job& job, const Row& row) {
    const Row* rival = rivalOf(job, row);
    if (!rival) return;
    const double ratio = medianOfRounds(row, *rival, [](double own, double other) { return own / other; });
    const double more = medianOfRounds(row, *rival, [](double own, double other) { return own - other; });
    if (row.ratio) judge(fmt::format("{:.2f} x {}", ratio, rival->name), ratio, *row.ratio);
    if (row.more) judge(fmt::format("{:.2f} ms more than {}", more, rival->name), more, *row.more);
  }

  /// The first judgement stands beside the row's times, the others below.
  void judge(const std::string& measured, double value, double bound) {
    const bool held = value <= bound;
    allHeld_ = allHeld_ && held;
    fmt::print("{}{:<26} {:>7}  {}\n", line_, measured, bound, held ? "ok" : "MISSED");
    line_.assign(line_.size(), ' ');
    isJudged_ = true;
  }

  std::string line_;  // what stands left of the next judgement
  bool isJudged_ = false;
  bool isFirst_ = true;
  bool allHeld_ = true;
};

std::optional<double> number(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value <= 0) return std::nullopt;
  return value;
}

bool readWord(Row& row, std::string_view word) {
  const std::size_t equals = word.find('=');
  const std::string_view key = word.substr(0, equals);
  if (equals == std::string_view::npos) return row.isPeer = key == "peer";
  const std::string_view value = word.substr(equals + 1);
  for (const auto& [name, field] :
       {std::pair{"of", &row.other}, std::pair{"before", &row.before}, std::pair{"after", &row.after}}) {
    if (key != name) continue;
    *field = value;
    return !value.empty();
  }
  for (const auto& [name, field] :
       {std::pair{"ratio", &row.ratio}, std::pair{"more", &row.more}, std::pair{"memory", &row.memory}}) {
    if (key == name) return (*field = number(value)).has_value();
  }
  return false;
}

/// Consumes the arguments behind `--row` up to the next row or job.
std::optional<Row> readRow(std::span<char*>& arguments) {
  if (arguments.empty()) return std::nullopt;
  Row row;
  row.name = arguments[0];
  std::size_t at = 1;
  for (; at < arguments.size() && arguments[at] != std::string_view("--"); ++at) {
    if (!readWord(row, arguments[at])) return std::nullopt;
  }
  for (++at; at < arguments.size(); ++at) {
    const std::string_view argument = arguments[at];
    if (argument == "--row" || argument == "--job") break;
    row.command.push_back(arguments[at]);
  }
  if (row.command.empty()) return std::nullopt;
  row.command.push_back(nullptr);
  arguments = arguments.subspan(at);
  return row;
}

/// A bound that nothing could miss is a mistake.
bool hasRival(const Job& job, const Row& row) {
  if (!row.ratio && !row.more) return true;
  return std::any_of(job.rows.begin(), job.rows.end(), [&row](const Row& other) {
    return &other != &row && (row.other.empty() ? other.isPeer && !row.isPeer : other.name == row.other);
  });
}

bool isComplete(const Job& job) {
  return !job.rows.empty() &&
         std::all_of(job.rows.begin(), job.rows.end(), [&job](const Row& row) { return hasRival(job, row); });
}

/// Nothing when the arguments are not as described above.
std::optional<std::vector<Job>> readJobs(std::span<char*> arguments) {
  std::vector<Job> jobs;
  while (!arguments.empty()) {
    const std::string_view kind = arguments[0];
    if (kind == "--job" && arguments.size() > 2) {
      const auto rounds = number(arguments[2]);
      if (!rounds || *rounds < 1) return std::nullopt;
      jobs.push_back({.title = arguments[1], .rounds = static_cast<int>(*rounds), .rows = {}});
      arguments = arguments.subspan(3);
    } else if (kind == "--row" && !jobs.empty()) {
      arguments = arguments.subspan(1);
      auto row = readRow(arguments);
      if (!row) return std::nullopt;
      jobs.back().rows.push_back(std::move(*row));
    } else {
      return std::nullopt;
    }
  }
  return jobs;
}

}  // namespace

int main(int count, char** arguments) {
  auto jobs = readJobs(std::span(arguments, static_cast<std::size_t>(count)).subspan(1));
  if (!jobs || jobs->empty() || !std::all_of(jobs->begin(), jobs->end(), isComplete)) {
    fmt::print(stderr, "usage: Timed {{--job TITLE ROUNDS {{--row NAME [WORD...] -- PROGRAM [ARGUMENT...]}}...}}...\n");
    return 2;
  }
  Report report;
  for (Job& job : *jobs) {
    if (!measure(job)) return 2;
    report.title(job);
    for (const Row& row : job.rows) report.row(job, row);
  }
  return report.allHeld() ? 0 : 1;
}
