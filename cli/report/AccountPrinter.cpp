#include "cli/report/AccountPrinter.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <string_view>

#include "cli/terminal/Printable.h"

namespace {

// What the texts below hold places for. Texts of files are put in as they are and escaped later.
constexpr std::string_view kDetails = "{details}";  ///< what the findings belong to
constexpr std::string_view kOptions = "{options}";  ///< that select the formats in the details
constexpr std::string_view kDetail = "{detail}";    ///< that of the example

/// One row for each kind that has a line; `one` is empty for those that only an audit lists. A
/// remedy names only what there is today: when a verb is added that does away with a kind, its name
/// belongs here.
struct Wording {
  FindingKind kind;
  std::string_view one;  ///< after "1 "
  std::string_view many;
  std::string_view ofExample;  ///< after the path of the example
  std::string_view remedy;
  bool isToldElsewhere = false;  ///< by a run, which has no line for it then
};

// clang-format off
constexpr Wording kWordings[] = {
    {FindingKind::SubFolder, "master in {details} was not read", "masters in {details} were not read", "",
     "add --all-sub-folders, or choose with --sub-folder"},
    {FindingKind::Format, "master of {details} was not read", "masters of {details} were not read", "",
     "add {options}"},
    {FindingKind::Suffix, "master of another suffix ({details}) was not read", "masters of other suffixes ({details}) were not read", "",
     "check --folder-suffix and --cgs-suffix"},
    {FindingKind::Case, "name differs only in case or Unicode form from one looked for", "names differ only in case or Unicode form from those looked for", " (wanted: {detail})",
     "rename it"},
    {FindingKind::Unknown, "file among the masters fits no format", "files among the masters fit no format", "",
     "rename it, or move it away"},
    {FindingKind::Orphan, "master belongs to no report", "masters belong to no report", "",
     "restore the report, or remove the master with orvdiff remove --orphans"},
    {FindingKind::Claim, "master is claimed by several reports", "masters are claimed by several reports", " by {detail}",
     "it counts for the longest name"},
    {FindingKind::Unread, "master was not compared as it should have been", "masters were not compared as they should have been", " ({detail})",
     "if the suite changed during the run, run again"},
    {FindingKind::Output, "output has no master", "outputs have no master", "",
     "store one with orvdiff accept --new if the output is right"},
    {FindingKind::Shared, "output is compared for several reports of one name", "outputs are compared for several reports of one name", " for {detail}",
     "rename one of the reports"},
    {FindingKind::Leftover, "file is left over from an earlier run", "files are left over from earlier runs", "",
     "remove it (--save-normalized does so with its own)"},
    {FindingKind::Picture, "picture was not compared as {details}, which has no output folder, but only in another format", "pictures were not compared as {details}, which have no output folder, but only in another format", "",
     "name the formats that you expect with -f"},
    {FindingKind::Vacuous, "pair passed with nothing to compare", "pairs passed with nothing to compare", "",
     "check the master"},
    {FindingKind::Mask, "pass rests on outsized masks", "passes rest on outsized masks", "",
     "look at what the rules take out of its texts"},
    {FindingKind::Unverified, "report has no master in any selected format", "reports have no master in any selected format", "",
     "store one", true},
    {FindingKind::Unreadable, "folder or file cannot be read", "folders or files cannot be read", "",
     "make it readable", true},
    {FindingKind::Empty, "master is empty", "masters are empty", "",
     "replace it"},
    {FindingKind::Large, "master is too large to be compared", "masters are too large to be compared", " ({detail})",
     "split the report"},
    {FindingKind::Invalid, "master is not valid in its own format", "masters are not valid in their own formats", " ({detail})",
     "replace it"},
    {FindingKind::Identical, "master is the same as that of another report", "masters are the same as those of other reports", " and {detail}",
     "check whether one of them was stored under a wrong name"},
    {FindingKind::Pattern, "normalisation rule changes no master", "normalisation rules change no master", "",
     "harmless if no output needs it"},
};
// clang-format on

const Wording* wordingOf(FindingKind kind) {
  const auto* const found = std::find_if(std::begin(kWordings), std::end(kWordings),
                                         [kind](const Wording& row) { return row.kind == kind; });
  return found != std::end(kWordings) ? found : nullptr;
}

void fill(std::string& text, std::string_view place, const std::string& value) {
  const std::size_t start = text.find(place);
  if (start != std::string::npos) {
    text.replace(start, place.size(), value);
  }
}

std::string listed(const FindingTotal& total, std::string_view before, std::string_view after) {
  const bool isOfSubFolders = total.kind == FindingKind::SubFolder;
  std::string list;
  for (const std::string& detail : total.details) {
    if (!detail.empty() || !isOfSubFolders) {
      list += list.empty() ? "" : ", ";
      list.append(before).append(detail.empty() ? "none" : detail).append(after);
    }
  }
  if (isOfSubFolders && total.details.count({}) != 0) {
    list += list.empty() ? "no sub-folder" : " and in no sub-folder";
  }
  return list + (total.details.size() == FindingTotal::kMostDetails ? ", ..." : "");
}

std::string whatIsSaid(const Wording& wording, const FindingTotal& total) {
  std::string what(total.count == 1 ? wording.one : wording.many);
  fill(what, kDetails, listed(total, "", ""));
  return std::to_string(total.count) + ' ' + what;
}

std::string remedyFor(const Wording& wording, const FindingTotal& total) {
  std::string remedy(wording.remedy);
  fill(remedy, kOptions, listed(total, "--", "-output-dir NAME"));
  return remedy;
}

}  // namespace

std::string accountLine(const FindingTotal& total) {
  const Wording* const wording = wordingOf(total.kind);
  if (wording == nullptr || wording->isToldElsewhere) {
    return {};
  }
  std::string example(wording->ofExample);
  fill(example, kDetail, total.example.detail);
  return whatIsSaid(*wording, total) + (total.count == 1 ? ": " : ", such as ") +
         total.example.path + example + "; " + remedyFor(*wording, total);
}

std::string accountHeading(const FindingTotal& total) {
  const Wording* const wording = wordingOf(total.kind);
  return wording != nullptr ? whatIsSaid(*wording, total) + "; " + remedyFor(*wording, total)
                            : std::to_string(total.count);
}

void printAccount(const std::vector<FindingTotal>& totals) {
  constexpr int kKeyColumns = 13;
  if (countAccounted(totals) > 0) {
    std::cout << "Not accounted for:\n";
  }
  for (const FindingTotal& total : totals) {
    if (const std::string line = accountLine(total); !line.empty()) {
      std::cout << "    " << std::left << std::setw(kKeyColumns) << keyOf(total.kind)
                << printable(line) << '\n';
    }
  }
}

std::uint64_t countAccounted(const std::vector<FindingTotal>& totals) {
  std::uint64_t count = 0;
  for (const FindingTotal& total : totals) {
    count += accountLine(total).empty() ? 0 : total.count;
  }
  return count;
}
