#include "settings/usage_text.h"

namespace kesh::settings {

const std::vector<const char*>& usageLines() {
  static const std::vector<const char*> lines = {
      "This is KESH pattern player. Usage: ",
      "  kesh_player [options]",
      "IO and pattern files:",
      "  -i, --input            <file>   input file of pattern, should be set after pattern file is specified",
      "  -o, --golden           <file>   golden file of pattern, should be set after pattern file is specified",
      "  -f, --pattern          <file>   pattern file",
      "Execution options:",
      "  -l, --loop             <num>    loop count (default: 1)",
      "  -b, --boost            <value>  boost value, -1 for random boost, should be set after pattern file is specified (0-100 default: 0)",
      "  -s, --soft             <value>  soft limit, (default: 0)",
      "  -a, --hard             <value>  hard limit, (default: 0)",
      "  -c, --core             <num>    core affinity, should be set after pattern file is specified(default: 0)",
      "    , --session_reused            reuse session each run, (default: off)",
      "    , --pack                      pack patterns, trigger former describe patterns at the same time (default: off)",
      "  -r, --random                    randomize test order, (default: off)",
      "  -g, --group            <num>    group index to run, command sets with the same group index will be executed together (default: off)",
      "  -t, --test             <case#>  set default test case to run",
      "    , --command          <file>   read command from file, each command in a separate line (default: off)",
  };
  return lines;
}

}  // namespace kesh::settings
