// The pieces every output format shares: a failed comparison told with the
// golden's expected bytes, how an abnormal end is told, and the command line.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "report/diff_text.h"
#include "report/naming.h"
#include "report/report_options.h"
#include "testing/temp_dir.h"

namespace kesh::report {
namespace {

TEST(DescribeDiff, ExpectedFromTheGoldenActualByXor) {
  kesh::testing::TempDir dir;
  const std::string golden = dir.path() + "/out.bin";
  std::ofstream(golden, std::ios::binary) << std::string("\x10\x20\x30\x40", 4);
  DiffSummary diff;
  diff.listedBytes = 4;
  diff.differing = 2;
  diff.firstOffset = 1;
  diff.lastOffset = 3;
  diff.firstValues = {{1, 0x0f}, {3, 0xff}};
  EXPECT_EQ(describeDiff(diff, golden),
            "2 of 4 bytes differ (offsets 1..3): at 1 expected 0x20 actual 0x2f, at 3 expected 0x40 actual 0xbf");
  // Without the golden at hand (a built-in case) only the listed values remain.
  EXPECT_EQ(describeDiff(diff, ""), "2 of 4 bytes differ (offsets 1..3): at 1 xor 0x0f, at 3 xor 0xff");
  diff.differing = 9;
  EXPECT_EQ(describeDiff(diff, "").substr(describeDiff(diff, "").size() - 5), ", ...");
}

struct EndRow {
  const char* label;
  std::vector<std::string> fatal;
  int status;
  int signal;
  std::string told;
};

class AbnormalEnd : public ::testing::TestWithParam<EndRow> {};

TEST_P(AbnormalEnd, Rows) {
  const EndRow& row = GetParam();
  Results results;
  results.fatal = row.fatal;
  results.status = row.status;
  results.signal = row.signal;
  EXPECT_EQ(abnormalEnd(results), row.told);
}

INSTANTIATE_TEST_SUITE_P(Rows, AbnormalEnd,
                         ::testing::Values(EndRow{"Passed", {}, 0, 0, ""}, EndRow{"RunFailed", {}, 255, 0, ""},
                                           EndRow{"Fatal", {"Failed to play pattern"}, 1, 0, "Failed to play pattern"},
                                           EndRow{"Signal", {}, 139, 11, "killed by signal 11 (Segmentation fault)"},
                                           EndRow{"SilentStatus", {}, 3, 0, "kesh_player ended with status 3"}),
                         [](const ::testing::TestParamInfo<EndRow>& rowInfo) {
                           return std::string(rowInfo.param.label);
                         });

struct OptionsRow {
  const char* label;
  std::vector<std::string> args;
  std::string why;  // empty: accepted
};

class ParseReportOptions : public ::testing::TestWithParam<OptionsRow> {};

TEST_P(ParseReportOptions, Rows) {
  const OptionsRow& row = GetParam();
  ReportOptions options;
  std::string why;
  EXPECT_EQ(parseReportOptions(row.args, options, why), row.why.empty()) << why;
  EXPECT_EQ(why, row.why);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ParseReportOptions,
    ::testing::Values(
        OptionsRow{
            "AllOutputs", {"--junit", "a", "--json", "b", "--csv", "c", "--html", "d", "--", "p", "-t", "0"}, ""},
        OptionsRow{"Log", {"--log", "l", "--status", "139", "--", "p"}, ""},
        OptionsRow{"NoDashes", {"--junit", "a", "p"}, "unknown option 'p'"},
        OptionsRow{"NoTool", {"--junit", "a", "--"}, "no tool to run: give '--' and the kesh_player command"},
        OptionsRow{"MissingValue", {"--junit"}, "option '--junit' needs a value"},
        OptionsRow{"StatusOutOfRange",
                   {"--log", "l", "--status", "256", "--", "p"},
                   "--status needs an exit status from 0 to 255, not '256'"},
        OptionsRow{"StatusWithoutLog", {"--status", "1", "--", "p"}, "--status is only meaningful with --log"}),
    [](const ::testing::TestParamInfo<OptionsRow>& rowInfo) { return std::string(rowInfo.param.label); });

}  // namespace
}  // namespace kesh::report
