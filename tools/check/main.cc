#include <iostream>

#include "check/check_options.h"
#include "check/checker.h"
#include "check/report.h"

int main(int argc, char** argv) {
  const kesh::check::CheckOptions options = kesh::check::parseCheckOptions(argc, argv);
  if (!options.error.empty()) {
    std::cerr << "kesh_check: " << options.error << '\n' << kesh::check::checkUsage();
    return kesh::check::kCouldNotCheck;
  }
  if (options.help) {
    std::cout << kesh::check::checkUsage();
    return kesh::check::kClean;
  }
  return kesh::check::runCheck(options, std::cout, std::cerr);
}
