#include "runtime/api_call.h"

#include "runtime/faults.h"
#include "runtime/trace.h"

namespace kesh::runtime {

ApiCall::ApiCall(Fn fn) : fn_(fn), injected_(false), tracing_(false) {
  try {
    injected_ = FaultPlan::instance().countCall(fn);
    tracing_ = TraceSink::instance().enabled();
  } catch (...) {
    // The settings could not be read (out of memory): run the call plainly.
  }
}

std::string ApiCall::handleText(Kind kind, HandleId id) {
  if (id == 0) return "null";
  return kindLetter(kind) + std::to_string(id);
}

void ApiCall::addArg(const char* key, const std::string& value) {
  if (!args_.empty()) args_ += ", ";
  args_ += key;
  args_ += '=';
  args_ += value;
}

ApiCall& ApiCall::text(const char* key, const char* value) {
  return formatted(key, [value] { return value == nullptr ? std::string("null") : quoted(value); });
}

ApiCall& ApiCall::number(const char* key, int64_t value) {
  return formatted(key, [value] { return std::to_string(value); });
}

ApiCall& ApiCall::handle(const char* key, Kind kind, const void* value) {
  return formatted(key, [kind, value] { return handleText(kind, idOf(value)); });
}

ApiCall& ApiCall::output(const char* key) {
  if (tracing_) {
    try {
      outputs_.emplace_back(key, "-");
    } catch (...) {
      tracing_ = false;
    }
  }
  return *this;
}

void ApiCall::setOutputText(const char* key, const std::string& value) {
  for (auto& out : outputs_) {
    if (out.first == key) out.second = value;
  }
}

void ApiCall::setOutput(const char* key, int64_t value) {
  if (tracing_) setOutputText(key, std::to_string(value));
}

void ApiCall::setOutputHandle(const char* key, Kind kind, HandleId id) {
  if (tracing_) setOutputText(key, handleText(kind, id));
}

void ApiCall::note(std::string text) {
  for (char& c : text) {
    if (c == '\n' || c == '\r') c = ' ';  // a trace entry is one line
  }
  note_ = std::move(text);
}

void ApiCall::finish(const std::string& result) {
  if (!tracing_) return;
  try {
    for (const auto& out : outputs_) addArg(out.first.c_str(), out.second);
    std::string line = std::string(functionName(fn_)) + '(' + args_ + ") = " + result;
    if (injected_) {
      line += " (injected)";
    } else if (!note_.empty()) {
      line += " (" + note_ + ')';
    }
    TraceSink::instance().writeLine(line);
  } catch (...) {
    // A trace line that cannot be built is dropped; the call's result stands.
  }
}

}  // namespace kesh::runtime
