#include "check/player_args.h"

#include <getopt.h>

#include <cstdlib>
#include <iostream>
#include <set>
#include <utility>

#include "check/file_probe.h"
#include "check/tool_stop.h"
#include "settings/parse_hooks.h"
#include "settings/tester_setting.h"
#include "settings/word_split.h"

namespace kesh::check {

namespace {

using settings::ParseHooks;
using TestCommand = TesterSetting::TestCommand;

constexpr char kProgramName[] = "kesh_player";
constexpr char kUnknownOption[] = "Unknown option: ";

// The parsers echo every option on standard output; the checker's output is its findings.
class QuietStdout {
 public:
  QuietStdout() : saved_(std::cout.rdbuf(nullptr)) {}
  ~QuietStdout() { std::cout.rdbuf(saved_); }
  QuietStdout(const QuietStdout&) = delete;
  QuietStdout& operator=(const QuietStdout&) = delete;

 private:
  std::streambuf* saved_;
};

// Installs hooks for a scope and puts the previous ones back.
class HookScope {
 public:
  explicit HookScope(ParseHooks hooks) : saved_(settings::parseHooks()) { settings::parseHooks() = std::move(hooks); }
  ~HookScope() { settings::parseHooks() = std::move(saved_); }
  HookScope(const HookScope&) = delete;
  HookScope& operator=(const HookScope&) = delete;

 private:
  ParseHooks saved_;
};

std::vector<uint8_t> noBytes(settings::DataRole, const char*) { return {}; }

// The scanner has just refused an option of `argv`: the word that holds it.
std::string refusedWord(const std::vector<char*>& argv) {
  const int at = optind;
  if (optopt == 0) return at > 0 && at <= static_cast<int>(argv.size()) ? argv[at - 1] : "";
  // A one-letter option may stand inside a cluster that the scanner has not left yet.
  for (int index : {at - 1, at}) {
    if (index < 1 || index >= static_cast<int>(argv.size())) continue;
    const std::string word = argv[index];
    if (word.size() > 1 && word[0] == '-' && word.find(static_cast<char>(optopt), 1) != std::string::npos) return word;
  }
  return std::string("-") + static_cast<char>(optopt);
}

// Builds `line` again on words the checker owns, only to see the word the
// parser stops at: the tool's own vector is gone once it has stopped.
std::string unknownOptionWord(const std::string& line) {
  HookScope quiet(ParseHooks{&noBytes, {}, {}, {}, {}, {}});
  std::vector<std::string> words = settings::splitCommandWords(kProgramName, line);
  TestCommand scratch(kProgramName, "");  // an empty line: nothing to stop at
  std::vector<char*> argv = scratch.getArgs(words);
  const ToolStop stop = runUntilStop([&] { scratch.parseArg(static_cast<int>(argv.size()), argv.data()); });
  const std::string word = stop.stopped ? refusedWord(argv) : "";
  settings::resetScanner();  // `words` end here
  return word;
}

class Collector {
 public:
  Collector(PatternCatalog& catalog, Diagnostics& out) : catalog_(catalog), out_(out) {}

  ParseHooks hooks() {
    ParseHooks hooks;
    hooks.readData = &noBytes;
    hooks.commandSetStarts = [this](const settings::CommandOrigin& origin) { start(origin); };
    hooks.optionApplied = [this](int code, const char* argument) { applied(code, argument); };
    hooks.dataBound = [this](const settings::DataBinding& binding) { bound(binding); };
    hooks.optionIgnored = [this](const char* word) { result_.run.ignoredWords.emplace_back(word); };
    hooks.readCommandFile = [this](const char* programName, const char* fileName) {
      readFile(programName, fileName);
      return std::vector<TestCommand>();  // the sets are judged here, one by one
    };
    return hooks;
  }

  void parseGlobal(const std::vector<std::string>& args) {
    std::vector<std::string> words{kProgramName};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    const ToolStop stop = runUntilStop([&] {
      TesterSetting setting(static_cast<int>(words.size()), argv.data());
      result_.run.help = setting.help;
      result_.run.loopCount = setting.loopCount;
      // Only the command line's own set is left in the setting.
      for (const auto& group : setting.commandGroups) {
        for (const TestCommand& command : group) finish(command);
      }
    });
    if (!stop.stopped) return;
    settings::resetScanner();
    if (!result_.sets.empty() && result_.sets.back().where.line == 0 && !result_.sets.back().built) {
      fail(stop);
      return;
    }
    result_.run.stopped = true;
    out_.error({kCommandLine, 0}, "kesh_player would stop with \"" + visible(stop.message) + "\"");
  }

  PlayerArgs take() { return std::move(result_); }

 private:
  SetRecord& current() { return result_.sets.back(); }

  void start(const settings::CommandOrigin& origin) {
    SetRecord set;
    set.where = origin.fileName != nullptr ? Location{origin.fileName, origin.lineNumber} : Location{kCommandLine, 0};
    set.line = origin.line;
    result_.sets.push_back(std::move(set));
  }

  void applied(int code, const char* argument) {
    if (code == 'f') {
      current().patterns.emplace_back();
      current().patterns.back().path = argument;
    } else if (code == 't') {
      current().patterns.emplace_back();
      current().patterns.back().builtInCase = std::atoi(argument);  // the tool's own conversion
    }
  }

  void bound(const settings::DataBinding& binding) {
    const DataRole role = binding.role == settings::DataRole::kGolden ? DataRole::kGolden : DataRole::kInput;
    current().patterns.at(binding.subCommand).bindings.push_back({role, binding.argName, binding.path, binding.kept});
  }

  void readFile(const char* programName, const char* fileName) {
    FileProbe probe;
    const FileFacts facts = probe.probe(fileName);
    if (facts.kind != FileKind::kRegular) {
      out_.error({kCommandLine, 0}, "command file '" + visible(fileName) + "' " + whyUnopenable(facts.kind) +
                                        ": kesh_player would stop with \"Error: cannot open file " +
                                        visible(fileName) + "\"");
      return;
    }
    settings::forEachCommandLine(fileName, [&](const std::string& line) {
      const ToolStop stop = runUntilStop([&] { finish(TestCommand(programName, line)); });
      if (!stop.stopped) return;
      settings::resetScanner();  // the stopped parse left the scanner inside words now gone
      fail(stop);
    });
  }

  void finish(const TestCommand& command) {
    SetRecord& set = current();
    set.built = true;
    set.randomBoost = command.randomBoost;
    set.groupLoopCount = command.groupLoopCount;
    set.groupIndex = command.groupIndex;
    for (const auto& [key, value] : command.graphOptions) set.graphOptions[key] = value;
    for (size_t k = 0; k < command.subCommands.size() && k < set.patterns.size(); ++k) {
      const TesterSetting::TestSubCommand& sub = command.subCommands[k];
      PatternRecord& pattern = set.patterns[k];
      for (const auto& [key, value] : sub.nodeOptions) pattern.nodeOptions[key] = value;
      if (pattern.builtInCase < 0) continue;
      catalog_.learnBuiltIn(pattern.builtInCase, sub.patternBinary);
      std::set<std::string> fromFiles;
      for (const DataBinding& binding : pattern.bindings) {
        if (binding.kept) fromFiles.insert(binding.name);
      }
      for (const auto& [name, bytes] : sub.inputs) {
        if (fromFiles.count(name) == 0) pattern.builtInInputs[name] = bytes.size();
      }
      for (const auto& [name, bytes] : sub.goldens) {
        if (fromFiles.count(name) == 0) pattern.builtInGoldens[name] = bytes.size();
      }
    }
  }

  void fail(const ToolStop& stop) {
    SetRecord& set = current();
    set.stop = stop.message;
    set.stopToStdout = stop.toStdout;
    if (stop.message.rfind(kUnknownOption, 0) == 0) set.stopWord = unknownOptionWord(set.line);
  }

  PatternCatalog& catalog_;
  Diagnostics& out_;
  PlayerArgs result_;
};

}  // namespace

PlayerArgs readPlayerArgs(const std::vector<std::string>& args, PatternCatalog& catalog, Diagnostics& out) {
  QuietStdout quiet;
  Collector collector(catalog, out);
  {
    HookScope scope(collector.hooks());
    collector.parseGlobal(args);
  }
  return collector.take();
}

}  // namespace kesh::check
