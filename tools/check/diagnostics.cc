#include "check/diagnostics.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <utility>

namespace kesh::check {

const char kCommandLine[] = "<command line>";

void Diagnostics::add(Severity severity, const Location& where, std::string text) {
  all_.push_back(Diagnostic{severity, where, std::move(text)});
}

size_t Diagnostics::count(Severity severity) const {
  size_t n = 0;
  for (const Diagnostic& d : all_) n += d.severity == severity ? 1 : 0;
  return n;
}

std::vector<Diagnostic> Diagnostics::byPlace() const {
  std::map<std::string, size_t> fileRank;
  for (const Diagnostic& d : all_) {
    if (d.where.file != kCommandLine) fileRank.emplace(d.where.file, fileRank.size());
  }
  auto rank = [&](const Diagnostic& d) {
    const auto found = fileRank.find(d.where.file);
    return std::make_pair(found == fileRank.end() ? fileRank.size() : found->second, d.where.line);
  };
  std::vector<Diagnostic> ordered = all_;
  std::stable_sort(ordered.begin(), ordered.end(),
                   [&](const Diagnostic& a, const Diagnostic& b) { return rank(a) < rank(b); });
  return ordered;
}

const char* severityName(Severity severity) {
  static const char* const kNames[] = {"error", "warning", "note"};  // in the enum's order
  return kNames[static_cast<int>(severity)];
}

std::string formatDiagnostic(const Diagnostic& diagnostic) {
  std::string line = diagnostic.where.file;
  if (diagnostic.where.line > 0) line += ":" + std::to_string(diagnostic.where.line);
  line += ": ";
  line += severityName(diagnostic.severity);
  line += ": ";
  line += diagnostic.text;
  return line;
}

std::string visible(const std::string& text) {
  std::string out;
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else if (byte < 0x20 || byte == 0x7f) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02x", byte);
      out += escape;
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace kesh::check
