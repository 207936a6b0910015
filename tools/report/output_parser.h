// Reads kesh_player's two output streams as they arrive, line by line, and
// attributes every line to its run, group, execution, pattern and argument
// with the plan of what the tool was asked to run. Work is linear in the
// output's size: a diff listing is summarised as it streams past. Owns its
// Results; not thread-safe (feed both streams from one thread).
#ifndef KESH_REPORT_OUTPUT_PARSER_H_
#define KESH_REPORT_OUTPUT_PARSER_H_

#include <cstddef>
#include <string>

#include "report/plan.h"
#include "report/results.h"

namespace kesh::report {

/// Turns output into Results.
class OutputParser {
 public:
  /// Reads against `plan`, which must outlive the parser.
  explicit OutputParser(const Plan& plan);

  /// Reads the next `size` bytes of standard output.
  void feedStdout(const char* data, size_t size);
  /// Reads the next `size` bytes of standard error.
  void feedStderr(const char* data, size_t size);
  /// Reads the next `size` bytes of a log holding both streams (each line is read by the
  /// grammar of standard output, else by that of standard error).
  void feedLog(const char* data, size_t size);
  /// Ends both streams (an unterminated last line is read) and records the exit status.
  void finish(int status, int signal);

  /// What has been read so far.
  const Results& results() const { return results_; }

 private:
  void stdoutLine(const std::string& line);
  bool stdoutGrammar(const std::string& line);
  void stderrLine(const std::string& line);
  bool runLine(const std::string& line);
  bool setUpLine(const std::string& line) const;
  void runningCommand(const std::string& text);
  void executionInfo(const std::string& text);
  bool timingLine(const std::string& line);
  void verdict(Outcome outcome, const std::string& name);
  bool listingLine(const std::string& line);
  void listValues(const char* begin, const char* end);
  Run* currentRun();
  void startGroup(const std::string& firstText);
  size_t setByText(const std::string& text) const;

  const Plan& plan_;
  Results results_;
  std::string outPending_;
  std::string errPending_;
  std::string logPending_;
  enum class Block { kNone, kStart, kInfo, kVerdicts } block_ = Block::kNone;
  bool inListing_ = false;
  bool expectDiffHeader_ = false;
  DiffSummary diff_;
  std::vector<int64_t> pendingBoosts_;
  size_t groupStart_ = 0;  // first execution of the current group
  size_t plannedGroup_ = kUnknown;
  size_t started_ = 0;      // executions of the group started
  size_t infoCursor_ = 0;   // executions of the group whose info was printed
  size_t verdictExec_ = 0;  // the group's execution the next verdict belongs to
  size_t verdictPattern_ = 0;
  size_t verdictArg_ = 0;
  size_t timingExec_ = kUnknown;
  std::vector<bool> groupUsed_;  // plan groups already run in this run
};

}  // namespace kesh::report

#endif  // KESH_REPORT_OUTPUT_PARSER_H_
