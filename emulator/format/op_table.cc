#include "format/op_table.h"

#include <cstdio>
#include <cstdlib>

#include "format/op_builder.h"

namespace kesh::format {
namespace {

[[noreturn]] void badCall(const char* what, const char* opName, const char* paramName) {
  std::fprintf(stderr, "kesh format: %s %s%s%s\n", what, opName, paramName ? " " : "", paramName ? paramName : "");
  std::abort();
}

bool kindMatches(ParamKind want, ParamKind given, bool givenBuffer) {
  if (isBuffer(want)) return given == ParamKind::kU32;
  if (givenBuffer) return false;
  if (want == ParamKind::kU32 || want == ParamKind::kI32) return given == ParamKind::kU32;
  return want == given;
}

}  // namespace

void unknownOperationOrParameter() { badCall("unknown operation or parameter", "", nullptr); }

void NamedParam::storeInto(const OpRow& row, Op* op) const {
  const ParamDef* param = findParam(row, name_);
  if (!param) badCall("no such parameter:", row.mnemonic, name_);
  if (!kindMatches(param->kind, enumKind_, isBuffer_)) badCall("wrong kind of value for", row.mnemonic, name_);
  op->p[param->position] = value_;
  if (isBuffer(param->kind)) op->p[param->position + 1] = offset_;
}

Op makeOp(Opcode opcode, std::initializer_list<NamedParam> params) {
  const OpRow* row = findOp(opcode);
  if (!row) badCall("unknown opcode", "", nullptr);
  Op op;
  op.opcode = opcode;
  for (size_t i = 0; i < row->paramCount; ++i) {
    if (row->params[i].kind == ParamKind::kOptionalBuffer) op.p[row->params[i].position] = kNoBuffer;
  }
  for (const NamedParam& param : params) param.storeInto(*row, &op);
  return op;
}

}  // namespace kesh::format
