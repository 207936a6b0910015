#include "pattern_asm/run_command.h"

#include <cstring>
#include <map>
#include <sstream>

#include "kesh/kesh_pattern.h"
#include "pattern_asm/file_io.h"
#include "settings/tester_setting.h"

namespace kesh::pattern_text {
namespace {

constexpr const char* kTool = "kesh_pattern_asm";

struct RunRequest {
  std::string pattern;
  std::vector<std::string> inputs;
  std::string outDir = ".";
};

// One argument as the library reports it, and the memory bound to it.
struct BoundArg {
  std::string name;
  uint32_t index = 0;
  uint32_t size = 0;
  bool noAlloc = false;
  _kesh_mem* mem = nullptr;
  void* addr = nullptr;
};

// Fills *request from the words after "run"; returns an error text or "".
std::string parseRunRequest(const std::vector<std::string>& args, RunRequest* request) {
  for (size_t i = 1; i < args.size(); ++i) {
    const std::string& word = args[i];
    if (word != "-i" && word != "-d") {
      if (word.size() > 1 && word[0] == '-') return "unknown option " + word;
      if (!request->pattern.empty()) return "more than one pattern file";
      request->pattern = word;
      continue;
    }
    if (i + 1 == args.size()) return word + " needs a value";
    const std::string& value = args[++i];
    if (word == "-i") {
      request->inputs.push_back(value);
    } else {
      request->outDir = value;
    }
  }
  return request->pattern.empty() ? "missing pattern file" : "";
}

// The library's handles for one run; every step reports its own failure and
// the destructor releases whatever was created.
class PatternRun {
 public:
  explicit PatternRun(std::ostream& err) : err_(err), player_(keshCreatePlayer(kTool)) {}
  ~PatternRun();
  PatternRun(const PatternRun&) = delete;
  PatternRun& operator=(const PatternRun&) = delete;

  bool load(const std::string& path);
  bool bindInputs(const std::vector<std::string>& paths);
  bool play();
  bool writeOutputs(const std::string& outDir);

 private:
  bool fail(const std::string& message) {
    err_ << message << "\n";
    return false;
  }
  bool queryArgs();
  bool queryWords(pattern_arg_info_type type, std::vector<uint32_t>* words);
  BoundArg* findArg(const std::string& name);

  std::ostream& err_;
  _kesh_player* player_;
  _pattern* pattern_ = nullptr;
  _pattern_graph* graph_ = nullptr;
  _pattern_node_handle* node_ = nullptr;
  _pattern_job* job_ = nullptr;
  std::string path_;
  std::vector<BoundArg> args_;
};

PatternRun::~PatternRun() {
  for (const BoundArg& arg : args_) {
    if (arg.mem) keshDestroyMem(arg.mem);
  }
  if (job_) keshDestroyPatternJob(job_);
  if (node_) keshDestroyPatternNode(node_);
  if (graph_) keshDestroyPatternGraph(graph_);
  if (pattern_) keshDestroyPattern(pattern_);
  if (player_) keshDestroyPlayer(player_);
}

bool PatternRun::load(const std::string& path) {
  path_ = path;
  std::string binary;
  if (!readFile(path, &binary)) return fail(path + ": cannot read file");
  if (!player_) return fail(std::string(kTool) + ": the pattern library refuses to create a player");
  pattern_ = keshCreatePattern(player_, binary.data(), static_cast<uint32_t>(binary.size()), "run_pattern");
  if (!pattern_) return fail(path + ": the pattern library refuses this pattern");
  graph_ = keshCreatePatternGraph(player_, "run_graph");
  if (!graph_ || keshAddPattern(graph_, pattern_, 0, 0, &node_, "run_pattern") != 0 ||
      keshBuildPatternGraph(graph_) != 0) {
    return fail(path + ": the pattern library cannot build a graph of it");
  }
  return queryArgs();
}

bool PatternRun::queryWords(pattern_arg_info_type type, std::vector<uint32_t>* words) {
  uint32_t size = 0;
  words->assign(args_.size(), 0);
  if (args_.empty()) return true;
  return keshGetPatternArgInfoSize(pattern_, type, &size) == 0 && size >= 4 * args_.size() &&
         keshGetPatternArgInfo(pattern_, type, words->data(), static_cast<uint32_t>(4 * args_.size())) == 0;
}

bool PatternRun::queryArgs() {
  uint32_t count = 0, namesSize = 0;
  if (keshGetPatternArgInfo(pattern_, PATTERN_ARG_INFO_NUM, &count, sizeof count) != 0 ||
      keshGetPatternArgInfoSize(pattern_, PATTERN_ARG_INFO_NAME, &namesSize) != 0) {
    return fail(path_ + ": the pattern library does not report its arguments");
  }
  args_.resize(count);
  std::vector<uint32_t> indices, sizes, noAlloc;
  std::string names(namesSize, '\0');
  if (!queryWords(PATTERN_ARG_INFO_INDEX, &indices) || !queryWords(PATTERN_ARG_INFO_SIZE, &sizes) ||
      !queryWords(PATTERN_ARG_INFO_NO_ALLOC, &noAlloc) ||
      (namesSize && keshGetPatternArgInfo(pattern_, PATTERN_ARG_INFO_NAME, names.data(), namesSize) != 0)) {
    return fail(path_ + ": the pattern library does not report its arguments");
  }
  std::istringstream nameList(names.c_str());
  for (size_t i = 0; i < count; ++i) {
    std::getline(nameList, args_[i].name, ';');
    args_[i].index = indices[i];
    args_[i].size = sizes[i];
    args_[i].noAlloc = noAlloc[i] != 0;
  }
  return true;
}

BoundArg* PatternRun::findArg(const std::string& name) {
  for (BoundArg& arg : args_) {
    if (arg.name == name) return &arg;
  }
  return nullptr;
}

bool PatternRun::bindInputs(const std::vector<std::string>& paths) {
  std::map<std::string, std::string> inputs;  // argument name -> bytes
  for (const std::string& path : paths) {
    const std::string name = TesterSetting::TestCommand::readArgName(path.c_str());
    const BoundArg* arg = findArg(name);
    std::string bytes;
    if (!arg) return fail(path + ": names no argument of " + path_ + " (it binds to \"" + name + "\")");
    if (arg->noAlloc) return fail(path + ": argument " + name + " is allocated by the library, not given");
    if (inputs.count(name)) return fail(path + ": a second input for argument " + name);
    if (!readFile(path, &bytes)) return fail(path + ": cannot read file");
    if (bytes.size() > arg->size) {
      return fail(path + ": " + std::to_string(bytes.size()) + " bytes, more than the " + std::to_string(arg->size) +
                  " of argument " + name);
    }
    inputs.emplace(name, std::move(bytes));
  }
  for (BoundArg& arg : args_) {
    if (arg.noAlloc) continue;
    arg.mem = keshCreateMem(player_, arg.size, arg.name.c_str());
    arg.addr = arg.mem ? keshMapMem(arg.mem) : nullptr;
    if (!arg.addr) return fail(arg.name + ": the pattern library cannot give its memory");
    // Zeroed whatever the library gives, so that a golden never holds stale bytes.
    std::memset(arg.addr, 0, arg.size);
    const auto input = inputs.find(arg.name);
    if (input != inputs.end()) std::memcpy(arg.addr, input->second.data(), input->second.size());
    if (keshFlushMem(arg.mem) != 0 || keshSetPatternNodeArg(node_, arg.index, arg.mem, arg.size) != 0) {
      return fail(arg.name + ": the pattern library cannot bind it");
    }
  }
  return keshUpdatePatternNode(node_) == 0 || fail(path_ + ": the pattern library refuses its arguments");
}

bool PatternRun::play() {
  if (keshPlayPatternGraph(player_, graph_, 0, &job_) != 0 || keshWaitPatternJob(job_) != 0) {
    return fail(path_ + ": the pattern did not run to its end");
  }
  return true;
}

bool PatternRun::writeOutputs(const std::string& outDir) {
  for (const BoundArg& arg : args_) {
    if (arg.noAlloc) continue;
    const std::string path = outDir + "/" + arg.name + ".bin";
    if (keshInvalidateMem(arg.mem) != 0) return fail(arg.name + ": the pattern library cannot read it back");
    if (!writeFile(path, static_cast<const char*>(arg.addr), arg.size)) return fail(path + ": cannot write file");
  }
  return true;
}

}  // namespace

int runPatternCommand(const std::vector<std::string>& args, std::ostream& err) {
  RunRequest request;
  const std::string problem = parseRunRequest(args, &request);
  if (!problem.empty()) {
    err << kTool << ": " << problem << " (see --help)\n";
    return 1;
  }
  PatternRun run(err);
  const bool done = run.load(request.pattern) && run.bindInputs(request.inputs) && run.play() &&
                    run.writeOutputs(request.outDir);
  return done ? 0 : 1;
}

}  // namespace kesh::pattern_text
