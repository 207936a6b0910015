#include "report/junit_writer.h"

#include <tinyxml2.h>

#include "report/diff_text.h"
#include "report/naming.h"

namespace kesh::report {

namespace {

using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;

struct Counts {
  int tests = 0, failures = 0, errors = 0, skipped = 0;
  void into(XMLElement* element) const {
    element->SetAttribute("tests", tests);
    element->SetAttribute("failures", failures);
    element->SetAttribute("errors", errors);
    element->SetAttribute("skipped", skipped);
  }
  void add(const Counts& other) {
    tests += other.tests;
    failures += other.failures;
    errors += other.errors;
    skipped += other.skipped;
  }
};

// A fault element (failure or error) with its message also as text, as CI servers show either.
void fault(XMLElement* testCase, const char* kind, const std::string& message) {
  XMLElement* element = testCase->InsertNewChildElement(kind);
  element->SetAttribute("message", message.c_str());
  element->SetText(message.c_str());
}

XMLElement* newCase(XMLElement* suite, const std::string& className, const std::string& name, Counts& counts) {
  XMLElement* testCase = suite->InsertNewChildElement("testcase");
  testCase->SetAttribute("classname", className.c_str());
  testCase->SetAttribute("name", name.c_str());
  ++counts.tests;
  return testCase;
}

Counts writeRun(XMLElement* suite, const Plan& plan, const Run& run, const std::string& endedBy) {
  Counts counts;
  const std::string className = "run " + std::to_string(run.number);
  for (size_t e = 0; e < run.executions.size(); ++e) {
    const Execution& execution = run.executions[e];
    const std::string name = executionName(plan, run, e);
    XMLElement* testCase = newCase(suite, className, name, counts);
    if (!execution.completed) {
      fault(testCase, "error", endedBy.empty() ? "the execution did not complete" : endedBy);
      ++counts.errors;
    }
    for (const Verdict& verdict : execution.verdicts) {
      XMLElement* argCase = newCase(suite, className, name + " " + argumentName(plan, execution, verdict), counts);
      if (verdict.outcome == Outcome::kSkipped) {
        argCase->InsertNewChildElement("skipped")->SetAttribute("message", "no golden data for the argument");
        ++counts.skipped;
      } else if (verdict.outcome == Outcome::kFailed) {
        fault(argCase, "failure",
              "result does not match golden data: " + describeDiff(verdict.diff, goldenOf(plan, execution, verdict)));
        ++counts.failures;
      }
    }
  }
  if (run.end == RunEnd::kIncomplete) {
    fault(newCase(suite, className, "run " + std::to_string(run.number) + " end", counts), "error",
          endedBy.empty() ? "the run printed no verdict" : endedBy);
    ++counts.errors;
  }
  return counts;
}

}  // namespace

std::string junitXml(const Plan& plan, const Results& results) {
  XMLDocument document;
  document.InsertEndChild(document.NewDeclaration());
  XMLElement* suites = document.NewElement("testsuites");
  suites->SetAttribute("name", "kesh_player");
  document.InsertEndChild(suites);
  const std::string endedBy = abnormalEnd(results);
  Counts total;
  for (const Run& run : results.runs) {
    XMLElement* suite = suites->InsertNewChildElement("testsuite");
    suite->SetAttribute("name", ("run " + std::to_string(run.number)).c_str());
    const bool last = &run == &results.runs.back();
    const Counts counts = writeRun(suite, plan, run, last ? endedBy : "");
    counts.into(suite);
    total.add(counts);
  }
  if (results.runs.empty() && !endedBy.empty()) {  // it stopped before any run began
    XMLElement* suite = suites->InsertNewChildElement("testsuite");
    suite->SetAttribute("name", "set-up");
    Counts counts;
    fault(newCase(suite, "set-up", "set-up", counts), "error", endedBy);
    counts.errors = 1;
    counts.into(suite);
    total.add(counts);
  }
  total.into(suites);
  tinyxml2::XMLPrinter printer;
  document.Print(&printer);
  return printer.CStr();
}

}  // namespace kesh::report
