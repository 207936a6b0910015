#include "pattern_asm/asm_cli.h"

#include <sstream>

#include "format/reader.h"
#include "format/writer.h"
#include "pattern_asm/file_io.h"
#include "pattern_asm/text_lexer.h"
#include "pattern_asm/text_parser.h"
#include "pattern_asm/text_printer.h"

namespace kesh::pattern_text {
namespace {

constexpr const char* kTool = "kesh_pattern_asm";
constexpr const char* kUsage =
    "usage: kesh_pattern_asm assemble IN.kasm -o OUT.bin [--pad N]\n"
    "       kesh_pattern_asm disassemble IN.bin [-o OUT.kasm]\n"
    "       kesh_pattern_asm args IN.bin\n"
    "       kesh_pattern_asm run IN.bin [-i FILE]... [-d OUTDIR]\n";

// The parsed command line of one sub-command.
struct Request {
  std::string command;
  std::string input;
  std::string output;
  uint32_t padTo = 0;
};

// Fills *request from the words after the sub-command; returns an error text or "".
std::string parseRequest(const std::vector<std::string>& args, Request* request) {
  request->command = args[0];
  bool padGiven = false;
  for (size_t i = 1; i < args.size(); ++i) {
    const std::string& word = args[i];
    const bool needsValue = word == "-o" || word == "--pad";
    if (needsValue && i + 1 >= args.size()) return word + " needs a value";
    if (word == "-o") {
      request->output = args[++i];
    } else if (word == "--pad") {
      int64_t pad = 0;
      if (!parseInteger(args[++i], 1, UINT32_MAX, &pad)) return "bad --pad value \"" + args[i] + "\"";
      request->padTo = static_cast<uint32_t>(pad);
      padGiven = true;
    } else if (word.size() > 1 && word[0] == '-') {
      return "unknown option " + word;
    } else if (!request->input.empty()) {
      return "more than one input file";
    } else {
      request->input = word;
    }
  }
  if (request->input.empty()) return "missing input file";
  if (request->command == "assemble" && request->output.empty()) return "assemble needs -o OUT";
  if (request->command != "assemble" && padGiven) return "--pad is only for assemble";
  if (request->command == "args" && !request->output.empty()) return "args writes to standard output only";
  return "";
}

int assemble(const Request& request, std::ostream& err) {
  std::string text;
  if (!readFile(request.input, &text)) {
    err << request.input << ": cannot read file\n";
    return 1;
  }
  format::Program program;
  TextError error;
  if (!parsePatternText(text, &program, &error)) {
    err << request.input << ":" << error.line << ": " << error.message << "\n";
    return 1;
  }
  const std::vector<uint8_t> binary = format::encodePattern(program, request.padTo);
  if (binary.empty()) {
    err << request.input << ": pattern needs " << format::encodedSize(program) << " bytes, more than --pad "
        << request.padTo << "\n";
    return 1;
  }
  if (!writeFile(request.output, reinterpret_cast<const char*>(binary.data()), binary.size())) {
    err << request.output << ": cannot write file\n";
    return 1;
  }
  return 0;
}

// Reads and decodes the binary named by the request; reports failures itself.
bool loadBinary(const Request& request, std::ostream& err, format::Program* program, size_t* size) {
  std::string bytes;
  if (!readFile(request.input, &bytes)) {
    err << request.input << ": cannot read file\n";
    return false;
  }
  std::string error;
  *size = bytes.size();
  if (!format::decodePattern(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), program, &error)) {
    err << request.input << ": " << error << "\n";
    return false;
  }
  return true;
}

int disassemble(const Request& request, std::ostream& out, std::ostream& err) {
  format::Program program;
  size_t size = 0;
  if (!loadBinary(request, err, &program, &size)) return 1;
  std::string text;
  if (size != format::encodedSize(program)) {
    text = "# padded to " + std::to_string(size) + " bytes: assemble with --pad " + std::to_string(size) + "\n";
  }
  text += formatPatternText(program);
  if (request.output.empty()) {
    out << text;
    return out.flush() ? 0 : 1;
  }
  if (!writeFile(request.output, text.data(), text.size())) {
    err << request.output << ": cannot write file\n";
    return 1;
  }
  return 0;
}

int listArgs(const Request& request, std::ostream& out, std::ostream& err) {
  format::Program program;
  size_t size = 0;
  if (!loadBinary(request, err, &program, &size)) return 1;
  out << formatArgTable(program);
  return out.flush() ? 0 : 1;
}

}  // namespace

int runPatternAsm(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (!args.empty() && (args[0] == "--help" || args[0] == "-h")) {
    out << kUsage;
    return 0;
  }
  if (args.empty() || (args[0] != "assemble" && args[0] != "disassemble" && args[0] != "args")) {
    err << kTool << ": " << (args.empty() ? "missing command" : "unknown command " + args[0]) << " (see --help)\n";
    return 1;
  }
  Request request;
  const std::string problem = parseRequest(args, &request);
  if (!problem.empty()) {
    err << kTool << ": " << problem << " (see --help)\n";
    return 1;
  }
  if (request.command == "assemble") return assemble(request, err);
  if (request.command == "disassemble") return disassemble(request, out, err);
  return listArgs(request, out, err);
}

}  // namespace kesh::pattern_text
