// kesh_report: runs kesh_player, passes its output through unchanged, and
// writes its results as JUnit XML, JSON, CSV timing statistics and HTML.
#include "report/report_main.h"

int main(int argc, char** argv) { return kesh::report::reportMain(argc, argv); }
