#include "player_test.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>

#include "e2e_config.h"
#include "report/output_parser.h"
#include "report/plan.h"
#include "testing/child_process.h"
#include "testing/read_file.h"
#include "testing/sample_patterns.h"

namespace kesh::testing {
namespace {

// `text` with the number after `then`, in each line that has `first` before it, replaced by "#".
std::string maskNumbers(std::string text, const std::string& first, const std::string& then) {
  for (size_t at = text.find(first); at != std::string::npos; at = text.find(first, at + 1)) {
    const size_t number = text.find(then, at) + then.size();
    if (number < then.size() || number > text.find('\n', at)) continue;
    text.replace(number, text.find_first_not_of("-0123456789", number) - number, "#");
  }
  return text;
}

// The tool's own lines of standard error: without an emulator's line naming the
// signal that killed the program, and without a sanitizer's report of it.
std::string toolLinesOf(const std::string& err) {
  std::istringstream stream(err);
  std::string kept;
  for (std::string line; std::getline(stream, line);) {
    const bool reportStarts = line.rfind("==", 0) == 0 || line.find("Sanitizer") != std::string::npos;
    if (kSanitized && reportStarts) break;
    if (kLauncher[0] == nullptr || line.rfind("qemu: ", 0) != 0) kept += line + "\n";
  }
  return kept;
}

// The lines of the tool's run with `args` in `dir` that its documented output grammar does not
// know, each with its stream: a line added to the tool without its description fails every test.
// Plans with the tool's own parsers, whose state is process-wide: one call at a time.
std::string linesOutsideGrammar(const std::vector<std::string>& args, const std::string& dir, const ChildResult& run) {
  const std::filesystem::path here = std::filesystem::current_path();
  std::filesystem::current_path(dir);  // the plan reads command files and patterns by the tool's paths
  const report::Plan plan = report::planOf(args);
  std::filesystem::current_path(here);
  report::OutputParser parser(plan);
  const std::string err = toolLinesOf(run.err);
  parser.feedStdout(run.out.data(), run.out.size());
  parser.feedStderr(err.data(), err.size());
  parser.finish(run.status, run.signal);
  std::string unknown;
  for (const report::UnknownLine& line : parser.results().unknown) {
    unknown += (line.onStderr ? "stderr: " : "stdout: ") + line.text + "\n";
  }
  return unknown;
}

}  // namespace

std::string linesWith(const std::string& text, const std::vector<std::string>& needles) {
  std::istringstream stream(text);
  std::string found;
  for (std::string line; std::getline(stream, line);) {
    const auto in = [&](const std::string& needle) { return line.find(needle) != std::string::npos; };
    if (std::any_of(needles.begin(), needles.end(), in)) found += line + "\n";
  }
  return found;
}

size_t countLines(const std::string& text, const std::string& needle) {
  const std::string lines = linesWith(text, {needle});
  return static_cast<size_t>(std::count(lines.begin(), lines.end(), '\n'));
}

std::string numberHandlesPerKind(const std::string& trace) {
  // A handle is a kind letter and a number, as a value: after "=", "= ", "[" or ", ".
  static const std::regex handle(R"((= ?|\[|, )([PTGNMJ])(\d+)\b)");
  std::map<std::string, std::string> renamed;
  std::map<char, int> counts;
  std::string out;
  auto rest = trace.cbegin();
  for (std::sregex_iterator it(trace.begin(), trace.end(), handle), end; it != end; ++it) {
    const std::smatch& found = *it;
    const std::string id = found[2].str() + found[3].str();
    auto [entry, fresh] = renamed.try_emplace(id);
    if (fresh) entry->second = found[2].str() + std::to_string(++counts[id[0]]);
    out.append(rest, found[0].first).append(found[1].str()).append(entry->second);
    rest = found[0].second;
  }
  return out.append(rest, trace.cend());
}

void PlayerTest::writeCopyCase(uint32_t size, const std::vector<size_t>& flips, const std::string& golden) {
  std::vector<uint8_t> input(size);
  for (uint32_t i = 0; i < size; ++i) input[i] = static_cast<uint8_t>(i * 7 + 3);
  writeFile("copy.bin", copyPattern(size));
  writeFile("in.bin", input);
  for (size_t at : flips) input.at(at) ^= 0x5a;
  writeFile(golden, input);
}

std::vector<std::string> playerCommand(const std::vector<std::string>& args) {
  std::vector<std::string> words(kLauncher, kLauncher + std::size(kLauncher) - 1);
  words.emplace_back(KESH_PLAYER_PATH);
  words.insert(words.end(), args.begin(), args.end());
  return words;
}

PlayerRun PlayerTest::run(const std::vector<std::string>& args, const std::string& failing) {
  // The test's own library settings never leak into the tool.
  ChildTask task{playerCommand(args), {}, dir_, {{"KESH_EMU_TRACE", "trace.log"}, {"KESH_EMU_FAIL", std::nullopt}}, ""};
  if (!failing.empty()) task.env.emplace_back("KESH_EMU_FAIL", failing);
  std::remove((dir_ + "/trace.log").c_str());
  const ChildResult child = runChild(task);
  EXPECT_EQ(linesOutsideGrammar(args, dir_, child), "");
  return {child.signal != 0 ? 128 + child.signal : child.status, maskNumbers(child.out, " of sub-command ", ": "),
          child.err, numberHandlesPerKind(maskNumbers(readFile(dir_ + "/trace.log"), "kind=", "value="))};
}

}  // namespace kesh::testing
