#include "output_grammar.h"

#include <unistd.h>

#include <climits>

#include "report/output_parser.h"
#include "report/plan.h"

namespace kesh::testing {

std::string linesOutsideGrammar(const std::vector<std::string>& args, const std::string& dir,
                                const std::string& out, const std::string& err, int status, int signal) {
  // The plan reads the command files and patterns by the paths the tool was given.
  char here[PATH_MAX];
  if (getcwd(here, sizeof here) == nullptr || chdir(dir.c_str()) != 0) return "cannot enter " + dir + "\n";
  const report::Plan plan = report::planOf(args);
  if (chdir(here) != 0) return "cannot return to " + std::string(here) + "\n";
  report::OutputParser parser(plan);
  parser.feedStdout(out.data(), out.size());
  parser.feedStderr(err.data(), err.size());
  parser.finish(status, signal);
  std::string unknown;
  for (const report::UnknownLine& line : parser.results().unknown) {
    unknown += (line.onStderr ? "stderr: " : "stdout: ") + line.text + "\n";
  }
  return unknown;
}

}  // namespace kesh::testing
