#include "pattern_asm/text_parser.h"

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "format/names.h"
#include "format/op_table.h"
#include "format/op_validator.h"
#include "format/table_rules.h"
#include "pattern_asm/text_lexer.h"

namespace kesh::pattern_text {
namespace {

using format::Program;
using Tokens = std::vector<std::string>;

constexpr int64_t kU32Max = UINT32_MAX;
constexpr int64_t kI32Min = INT32_MIN;

// Each step returns false once it has recorded the first fault and its line.
class Parser {
 public:
  explicit Parser(TextError* error) : error_(error) {}

  bool parse(const std::string& text, Program* out);

 private:
  struct PendingOp {
    int line;
    Tokens tokens;
  };

  bool fail(const std::string& message) {
    error_->line = line_;
    error_->message = message;
    return false;
  }

  bool parseLine(const Tokens& tokens);
  bool parseArg(const Tokens& tokens);
  bool parseInternal(const Tokens& tokens);
  bool parseConst(const Tokens& tokens);
  bool appendConst(const std::string& type, const Tokens& values);
  bool parseOp(const PendingOp& pending, format::Op* op);
  bool parseField(const format::ParamDef& field, const std::string& value, format::Op* op);
  bool parseBuffer(const std::string& text, bool optional, uint32_t* ref, uint32_t* offset);
  bool parseBufferId(const std::string& text, size_t* pos, uint32_t* ref, uint64_t* base);
  bool parseNumber(const std::string& text, int64_t min, int64_t max, const char* what, int64_t* value);

  TextError* error_;
  int line_ = 0;
  Program program_;
  std::vector<PendingOp> ops_;
  std::map<std::string, uint32_t> internalLabels_;
  std::map<std::string, uint32_t> constLabels_;
  std::set<uint32_t> argIndices_;
  uint64_t internalTotal_ = 0;
};

bool splitKeyValue(const std::string& token, std::string* key, std::string* value) {
  const size_t eq = token.find('=');
  if (eq == std::string::npos || eq == 0) return false;
  *key = token.substr(0, eq);
  *value = token.substr(eq + 1);
  return true;
}

// Finds `name` in one of the name tables of the format (functions, types).
bool lookupName(const char* (*nameOf)(uint32_t), const std::string& name, uint32_t* value) {
  for (uint32_t i = 0; nameOf(i); ++i) {
    if (name == nameOf(i)) {
      *value = i;
      return true;
    }
  }
  return false;
}

bool Parser::parseNumber(const std::string& text, int64_t min, int64_t max, const char* what, int64_t* value) {
  if (parseInteger(text, min, max, value)) return true;
  return fail(std::string("bad ") + what + " \"" + text + "\": expected an integer in " + std::to_string(min) +
              ".." + std::to_string(max));
}

bool Parser::parse(const std::string& text, Program* out) {
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    ++line_;
    Tokens tokens;
    std::string message;
    if (!splitLine(text.substr(start, end - start), &tokens, &message)) return fail(message);
    if (!tokens.empty() && !parseLine(tokens)) return false;
    start = end + 1;
  }
  // Operations may name buffers and labels declared further down, so they
  // are read once every table is known.
  program_.ops.resize(ops_.size());
  for (size_t i = 0; i < ops_.size(); ++i) {
    line_ = ops_[i].line;
    std::string reason;
    if (!parseOp(ops_[i], &program_.ops[i])) return false;
    if (!format::validateOp(program_.ops[i], program_, &reason)) return fail(reason);
  }
  *out = std::move(program_);
  return true;
}

bool Parser::parseLine(const Tokens& tokens) {
  const std::string& word = tokens[0];
  if (word == "arg") return parseArg(tokens);
  if (word == "internal") return parseInternal(tokens);
  if (word == "const") return parseConst(tokens);
  if (!format::findOp(word)) return fail("unknown directive or operation \"" + word + "\"");
  if (ops_.size() >= format::kMaxOps) return fail("more than " + std::to_string(format::kMaxOps) + " operations");
  ops_.push_back({line_, tokens});
  return true;
}

bool Parser::parseArg(const Tokens& tokens) {
  if (tokens.size() < 2) return fail("arg needs a name");
  if (program_.args.size() >= format::kMaxArgs) {
    return fail("more than " + std::to_string(format::kMaxArgs) + " arguments");
  }
  format::ArgSpec arg;
  arg.name = tokens[1];
  if (tokens[1][0] == '"') {
    size_t pos = 0;
    if (!readQuoted(tokens[1], &pos, &arg.name) || pos != tokens[1].size()) return fail("bad quoted name");
  }
  std::string reason;
  if (!format::checkArgName(arg.name, &reason)) return fail(reason);
  std::set<std::string> seen;
  for (size_t i = 2; i < tokens.size(); ++i) {
    std::string key, value;
    int64_t number = 0;
    if (tokens[i] == "noalloc") {
      key = "noalloc";
      arg.noAlloc = true;
    } else if (!splitKeyValue(tokens[i], &key, &value) || (key != "index" && key != "size")) {
      return fail("unexpected \"" + tokens[i] + "\" in arg: expected index=N, size=N or noalloc");
    } else if (!parseNumber(value, 0, kU32Max, key.c_str(), &number)) {
      return false;
    } else {
      (key == "index" ? arg.index : arg.size) = static_cast<uint32_t>(number);
    }
    if (!seen.insert(key).second) return fail("duplicate " + key + " in arg");
  }
  if (!seen.count("index") || !seen.count("size")) return fail("arg needs index=N and size=N");
  if (!format::checkBufferSize(arg.size, &reason)) return fail(reason);
  if (!argIndices_.insert(arg.index).second) return fail("duplicate argument index " + std::to_string(arg.index));
  for (const format::ArgSpec& other : program_.args) {
    if (other.name == arg.name) return fail("duplicate argument name \"" + arg.name + "\"");
  }
  program_.args.push_back(arg);
  return true;
}

bool Parser::parseInternal(const Tokens& tokens) {
  if (tokens.size() != 2 && tokens.size() != 3) return fail("expected: internal [LABEL] SIZE");
  if (program_.internalSizes.size() >= format::kMaxInternals) {
    return fail("more than " + std::to_string(format::kMaxInternals) + " internal buffers");
  }
  const auto number = static_cast<uint32_t>(program_.internalSizes.size());
  if (tokens.size() == 3) {
    if (!isIdentifier(tokens[1])) return fail("bad internal buffer label \"" + tokens[1] + "\"");
    if (!internalLabels_.emplace(tokens[1], number).second) return fail("duplicate label \"" + tokens[1] + "\"");
  }
  int64_t size = 0;
  std::string reason;
  if (!parseNumber(tokens.back(), 0, kU32Max, "size", &size)) return false;
  if (!format::checkBufferSize(static_cast<uint64_t>(size), &reason)) return fail(reason);
  internalTotal_ += static_cast<uint64_t>(size);
  if (internalTotal_ > format::kMaxInternalTotal) {
    return fail("internal buffers over " + std::to_string(format::kMaxInternalTotal) + " bytes in all");
  }
  program_.internalSizes.push_back(static_cast<uint32_t>(size));
  return true;
}

bool Parser::parseConst(const Tokens& tokens) {
  size_t next = 1;
  if (next < tokens.size() && tokens[next].size() > 1 && tokens[next].back() == ':') {
    const std::string label = tokens[next].substr(0, tokens[next].size() - 1);
    if (!isIdentifier(label)) return fail("bad label \"" + label + "\"");
    const auto offset = static_cast<uint32_t>(program_.constData.size());
    if (!constLabels_.emplace(label, offset).second) return fail("duplicate label \"" + label + "\"");
    ++next;
    if (next == tokens.size()) return true;
  }
  if (next >= tokens.size()) return fail("expected: const [LABEL:] hex|i8|i16|i32|zero VALUES");
  return appendConst(tokens[next], Tokens(tokens.begin() + static_cast<std::ptrdiff_t>(next) + 1, tokens.end()));
}

bool Parser::appendConst(const std::string& type, const Tokens& values) {
  std::vector<uint8_t>& data = program_.constData;
  if (type == "zero") {
    int64_t count = 0;
    if (values.size() != 1) return fail("expected: const zero COUNT");
    if (!parseNumber(values[0], 0, format::kMaxConstSize, "count", &count)) return false;
    data.resize(data.size() + static_cast<size_t>(count), 0);
  } else if (type == "hex") {
    for (const std::string& value : values) {
      int64_t byte = 0;
      for (size_t i = 0; i < value.size(); i += 2) {
        if (value.size() % 2 != 0 || !parseInteger("0x" + value.substr(i, 2), 0, 255, &byte)) {
          return fail("bad hex bytes \"" + value + "\"");
        }
        data.push_back(static_cast<uint8_t>(byte));
      }
    }
  } else {
    const int width = type == "i8" ? 1 : type == "i16" ? 2 : type == "i32" ? 4 : 0;
    if (width == 0) return fail("unknown constant type \"" + type + "\": expected hex, i8, i16, i32 or zero");
    const int64_t bits = 8 * width;
    for (const std::string& value : values) {
      int64_t number = 0;
      if (!parseNumber(value, -(int64_t{1} << (bits - 1)), (int64_t{1} << bits) - 1, type.c_str(), &number)) {
        return false;
      }
      for (int i = 0; i < width; ++i) data.push_back(static_cast<uint8_t>(static_cast<uint64_t>(number) >> (8 * i)));
    }
  }
  if (data.size() > format::kMaxConstSize) {
    return fail("constant data over " + std::to_string(format::kMaxConstSize) + " bytes");
  }
  return true;
}

bool Parser::parseOp(const PendingOp& pending, format::Op* op) {
  const format::OpRow& syntax = *format::findOp(pending.tokens[0]);
  op->opcode = syntax.opcode;
  op->p.fill(0);
  std::set<std::string> seen;
  for (size_t i = 1; i < pending.tokens.size(); ++i) {
    std::string key, value;
    if (!splitKeyValue(pending.tokens[i], &key, &value)) {
      return fail("expected key=value, got \"" + pending.tokens[i] + "\"");
    }
    const format::ParamDef* field = format::findParam(syntax, key);
    if (!field) return fail("unknown key \"" + key + "\" for " + syntax.mnemonic);
    if (!seen.insert(key).second) return fail("duplicate key \"" + key + "\"");
    if (!parseField(*field, value, op)) return false;
  }
  for (size_t i = 0; i < syntax.paramCount; ++i) {
    const format::ParamDef& field = syntax.params[i];
    if (seen.count(field.name)) continue;
    if (field.presence == format::Presence::kRequired) {
      return fail(std::string("missing ") + field.name + "= for " + syntax.mnemonic);
    }
    op->p[field.position] = format::paramDefault(syntax, field, op->p);
  }
  return true;
}

bool Parser::parseField(const format::ParamDef& field, const std::string& value, format::Op* op) {
  uint32_t& param = op->p[field.position];
  int64_t number = 0;
  switch (field.kind) {
    case format::ParamKind::kBuffer:
    case format::ParamKind::kOptionalBuffer:
      return parseBuffer(value, field.kind == format::ParamKind::kOptionalBuffer, &param, &op->p[field.position + 1]);
    case format::ParamKind::kU32:
      if (!parseNumber(value, 0, kU32Max, field.name, &number)) return false;
      param = static_cast<uint32_t>(number);
      return true;
    case format::ParamKind::kI32:
      // Hexadecimal bit patterns up to 0xFFFFFFFF are accepted as well.
      if (!parseNumber(value, kI32Min, kU32Max, field.name, &number)) return false;
      param = static_cast<uint32_t>(number);
      return true;
    case format::ParamKind::kUnaryFunc:
      return lookupName(format::unaryFuncName, value, &param) || fail("unknown unary function \"" + value + "\"");
    case format::ParamKind::kBinaryFunc:
      return lookupName(format::binaryFuncName, value, &param) || fail("unknown binary function \"" + value + "\"");
    case format::ParamKind::kDType:
      return lookupName(format::dtypeName, value, &param) || fail("unknown element type \"" + value + "\"");
  }
  return false;
}

// arg:NAME, int:N or int:LABEL, const or const:LABEL; *base is the label's offset.
bool Parser::parseBufferId(const std::string& text, size_t* pos, uint32_t* ref, uint64_t* base) {
  const size_t plus = text.find('+', *pos);
  const size_t idEnd = plus == std::string::npos ? text.size() : plus;
  if (text.compare(0, 4, "arg:") == 0) {
    std::string name;
    *pos = 4;
    if (*pos < text.size() && text[*pos] == '"') {
      if (!readQuoted(text, pos, &name)) return fail("bad quoted name in \"" + text + "\"");
    } else {
      name = text.substr(4, idEnd - 4);
      *pos = idEnd;
    }
    for (size_t i = 0; i < program_.args.size(); ++i) {
      if (program_.args[i].name == name) {
        *ref = format::bufferRef(format::Space::kArg, static_cast<uint32_t>(i));
        return true;
      }
    }
    return fail("unknown argument \"" + name + "\"");
  }
  if (text.compare(0, 4, "int:") == 0) {
    const std::string id = text.substr(4, idEnd - 4);
    *pos = idEnd;
    int64_t number = 0;
    const auto label = internalLabels_.find(id);
    if (label != internalLabels_.end()) {
      number = label->second;
    } else if (!parseInteger(id, 0, static_cast<int64_t>(program_.internalSizes.size()) - 1, &number)) {
      return fail("unknown internal buffer \"" + id + "\"");
    }
    *ref = format::bufferRef(format::Space::kInternal, static_cast<uint32_t>(number));
    return true;
  }
  if (text.compare(0, 5, "const") == 0 && (idEnd == 5 || text[5] == ':')) {
    *ref = format::bufferRef(format::Space::kConst, 0);
    *pos = idEnd;
    if (idEnd == 5) return true;
    const auto label = constLabels_.find(text.substr(6, idEnd - 6));
    if (label == constLabels_.end()) return fail("unknown constant label \"" + text.substr(6, idEnd - 6) + "\"");
    *base = label->second;
    return true;
  }
  return fail("bad buffer \"" + text + "\": expected arg:NAME, int:N, const or const:LABEL, then +OFFSET if needed");
}

bool Parser::parseBuffer(const std::string& text, bool optional, uint32_t* ref, uint32_t* offset) {
  if (text == "none") {
    if (!optional) return fail("this buffer cannot be none");
    *ref = format::kNoBuffer;
    *offset = 0;
    return true;
  }
  size_t pos = 0;
  uint64_t base = 0;
  if (!parseBufferId(text, &pos, ref, &base)) return false;
  int64_t extra = 0;
  if (pos < text.size()) {
    if (text[pos] != '+') return fail("bad buffer \"" + text + "\": expected +OFFSET after the buffer");
    if (!parseNumber(text.substr(pos + 1), 0, kU32Max, "offset", &extra)) return false;
  }
  if (base + static_cast<uint64_t>(extra) > UINT32_MAX) return fail("offset over 4294967295 in \"" + text + "\"");
  *offset = static_cast<uint32_t>(base + static_cast<uint64_t>(extra));
  return true;
}

}  // namespace

bool parsePatternText(const std::string& text, Program* out, TextError* error) {
  TextError scratch;
  return Parser(error ? error : &scratch).parse(text, out);
}

}  // namespace kesh::pattern_text
