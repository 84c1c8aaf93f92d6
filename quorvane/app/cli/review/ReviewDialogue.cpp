#include "quorvane/app/cli/review/ReviewDialogue.h"

#include "quorvane/app/cli/arguments/NearestWord.h"
#include "quorvane/app/cli/reports/ItemEvidence.h"
#include "quorvane/app/cli/reports/ScanReport.h"
#include "quorvane/app/cli/review/ReviewSelection.h"

#include <optional>
#include <set>
#include <utility>

namespace quorvane {

namespace {

using namespace reviewAnswer;

std::string wordsOf(const Part& part) {
  if (const auto* word = std::get_if<Word>(&part)) return word->word;
  const auto& [first, last] = std::get<Numbers>(part);
  return first == last ? std::to_string(first) : std::to_string(first) + "-" + std::to_string(last);
}

std::string_view keyOf(ReviewSelection::Change change) {
  switch (change) {
    case ReviewSelection::Change::selected: return "cli.review.selected";
    case ReviewSelection::Change::unselected: return "cli.review.unselected";
    case ReviewSelection::Change::onlyBlocked: return "cli.review.onlyBlocked";
    case ReviewSelection::Change::unknown: return "cli.review.unknown";
    case ReviewSelection::Change::notShown: return "cli.review.notShown";
  }
  std::unreachable();
}

class ReviewDialogue {
 public:
  ReviewDialogue(Console& console, ScanResult& result, const PlaceEvidence& evidence)
      : console_(console),
        result_(result),
        evidence_(evidence),
        selection_(result.items),
        style_(console.errorReport()) {}

  bool run() {
    showGroups(selection_.selected());
    console_.show(coverageReport(result_, style_));
    showHint();
    while (true) {
      const ItemSum sum = selection_.selectedSum();
      const auto line = console_.ask(sumMessage("cli.review.question", sum, style_));
      if (!line) return false;
      if (const auto answer = std::visit(*this, reviewAnswerFrom(*line))) return *answer;
    }
  }

  // What each kind of answer does; a value ends the dialogue.
  std::optional<bool> operator()(Yes) {
    if (selection_.selectedSum().count > 0) return true;
    say({"cli.review.nothingSelected", {}});
    return std::nullopt;
  }

  std::optional<bool> operator()(No) { return false; }

  std::optional<bool> operator()(ShowAll) {
    showGroups(selection_.all());
    return std::nullopt;
  }

  std::optional<bool> operator()(Help) {
    say({"cli.review.help", {}});
    return std::nullopt;
  }

  std::optional<bool> operator()(Look wanted) {
    if (const ScanItem* item = selection_.itemNumbered(wanted.number)) {
      console_.show(itemEvidence(*item, evidence_.of(*item), result_, style_));
      selection_.setShown(*item);
    } else {
      say({"cli.review.noSuchNumber", {{"what", std::to_string(wanted.number)}}});
    }
    return std::nullopt;
  }

  std::optional<bool> operator()(const Change& change) {
    std::set<const ScanItem*> toShow;
    for (const Part& part : change.parts) {
      const auto applied = selection_.apply(part);
      toShow.insert(applied.toShow.begin(), applied.toShow.end());
      tell(applied.change, wordsOf(part));
    }
    showGroups(selection_.groupsOf(toShow));  // behind the last part: one answer cannot show and select
    return std::nullopt;
  }

 private:
  void tell(ReviewSelection::Change change, const std::string& what) {
    std::vector<std::string> words = selection_.categoryNames();
    Message told{std::string(keyOf(change)), {{"what", what}, {"categories", MessageList{words}}}};
    for (const SafetyLevel level : allCases<SafetyLevel>()) words.emplace_back(caseName(level));
    const auto meant = nearestWord(what, words);
    if (change == ReviewSelection::Change::unknown && meant)
      told = {"cli.review.unknownWord", {{"what", what}, {"word", *meant}}};
    say(told);
  }

  void say(const Message& message) {
    ReportText text(style_);
    text.line(message);
    console_.show(text.take());
  }

  void showGroups(const std::vector<ItemGroup>& groups) {
    ReportText text(style_);
    writeItemTable(text, groups, style_);
    console_.show(text.take());
    selection_.setShown(groups);
  }

  void showHint() {
    const auto others = std::int64_t(selection_.count()) - selection_.selectedSum().count;
    if (others > 0) say({"cli.review.others", {{"count", others}}});
    say({"cli.review.hint", {}});
  }

  Console& console_;
  ScanResult& result_;
  const PlaceEvidence& evidence_;
  ReviewSelection selection_;
  const ReportStyle style_;
};

}  // namespace

bool isConfirmed(Console& console, ScanResult& result, const PlaceEvidence& evidence) {
  return ReviewDialogue(console, result, evidence).run();
}

}  // namespace quorvane
