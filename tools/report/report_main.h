// The whole of kesh_report: check the result files can be written, plan
// from the tool's arguments, run the tool (or read its log), write the
// results. Uses process-wide state (the environment, the tool's parsers,
// descriptors 1 and 2): one call per process.
#ifndef KESH_REPORT_REPORT_MAIN_H_
#define KESH_REPORT_REPORT_MAIN_H_

namespace kesh::report {

/// Runs kesh_report with `argv`; returns the tool's exit status, or 2 when the
/// report itself cannot do its work (its reason on standard error).
int reportMain(int argc, char** argv);

}  // namespace kesh::report

#endif  // KESH_REPORT_REPORT_MAIN_H_
