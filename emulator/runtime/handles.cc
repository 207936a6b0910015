#include "runtime/handles.h"

namespace kesh::runtime {

char kindLetter(Kind kind) {
  switch (kind) {
    case Kind::kPlayer: return 'P';
    case Kind::kPattern: return 'T';
    case Kind::kGraph: return 'G';
    case Kind::kNode: return 'N';
    case Kind::kJob: return 'J';
    case Kind::kMem: return 'M';
  }
  return '?';
}

HandleTable& HandleTable::instance() {
  static HandleTable* table = new HandleTable();  // never destroyed, see the header
  return *table;
}

HandleId HandleTable::newId() {
  std::lock_guard<std::mutex> lock(mutex_);
  return ++lastId_;
}

void HandleTable::insertErased(HandleId id, Kind kind, std::shared_ptr<void> object) {
  std::lock_guard<std::mutex> lock(mutex_);
  entries_[id] = Entry{kind, std::move(object)};
}

HandleId HandleTable::insertNewErased(Kind kind, std::shared_ptr<void> object) {
  std::lock_guard<std::mutex> lock(mutex_);
  HandleId id = lastId_ + 1;
  entries_[id] = Entry{kind, std::move(object)};
  lastId_ = id;  // only once the entry is in: a failed insert uses up no id
  return id;
}

std::shared_ptr<void> HandleTable::findErased(HandleId id, Kind kind) const {
  std::lock_guard<std::mutex> lock(mutex_);
  return findLocked(id, kind);
}

std::shared_ptr<void> HandleTable::findLocked(HandleId id, Kind kind) const {
  auto it = entries_.find(id);
  if (it == entries_.end() || it->second.kind != kind) return nullptr;
  return it->second.object;
}

std::shared_ptr<void> HandleTable::takeErased(HandleId id, Kind kind) {
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = entries_.find(id);
  if (it == entries_.end() || it->second.kind != kind) return nullptr;
  std::shared_ptr<void> object = std::move(it->second.object);
  entries_.erase(it);
  return object;
}

}  // namespace kesh::runtime
