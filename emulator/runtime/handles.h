// Handles given to callers are never-reused numbers cast to the opaque
// pointer types, looked up in one process-wide table: a destroyed, foreign or
// mistyped handle is simply not found, and no handle is ever dereferenced.
// The table owns one reference to each live object; it is thread-safe and is
// intentionally never destroyed, so calls made while the process exits are safe.
#ifndef KESH_EMULATOR_RUNTIME_HANDLES_H_
#define KESH_EMULATOR_RUNTIME_HANDLES_H_

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace kesh::runtime {

using HandleId = uintptr_t;

enum class Kind : uint8_t { kPlayer, kPattern, kGraph, kNode, kJob, kMem };

/// The letter that marks a handle of `kind` in the trace (P, T, G, N, J, M).
char kindLetter(Kind kind);

/// The id a handle carries (0 for null).
inline HandleId idOf(const void* handle) { return reinterpret_cast<HandleId>(handle); }

/// The handle of id `id`, typed as the caller's opaque pointer type.
template <class Opaque>
Opaque* handleOf(HandleId id) {
  return reinterpret_cast<Opaque*>(id);
}

class HandleTable {
 public:
  /// The process-wide table.
  static HandleTable& instance();

  /// A fresh id, never handed out before (ids of all kinds share one sequence).
  HandleId newId();

  /// Registers `object` under `id` (an id from newId()).
  template <class T>
  void insert(HandleId id, Kind kind, std::shared_ptr<T> object) {
    insertErased(id, kind, std::static_pointer_cast<void>(std::move(object)));
  }

  /// Registers `object` under a fresh id and returns the id: newId() and
  /// insert() in one step.
  template <class T>
  HandleId insertNew(Kind kind, std::shared_ptr<T> object) {
    return insertNewErased(kind, std::static_pointer_cast<void>(std::move(object)));
  }

  /// The live object of `kind` behind `handle`, or null.
  template <class T>
  std::shared_ptr<T> find(const void* handle, Kind kind) const {
    return std::static_pointer_cast<T>(findErased(idOf(handle), kind));
  }

  /// Two lookups under one lock: the objects behind `a` (of `kindA`) and `b`
  /// (of `kindB`), each null when not found.
  template <class A, class B>
  std::pair<std::shared_ptr<A>, std::shared_ptr<B>> findPair(const void* a, Kind kindA, const void* b,
                                                             Kind kindB) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return {std::static_pointer_cast<A>(findLocked(idOf(a), kindA)),
            std::static_pointer_cast<B>(findLocked(idOf(b), kindB))};
  }

  /// Removes the object of `kind` behind `handle` if `keep(object)` is false,
  /// under the table's lock (so `keep` must not call the table); true if removed.
  template <class T, class Keep>
  bool takeUnless(const void* handle, Kind kind, Keep keep) {
    std::shared_ptr<void> object;  // declared first: released after the lock
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = entries_.find(idOf(handle));
    if (it == entries_.end() || it->second.kind != kind) return false;
    if (keep(*static_cast<const T*>(it->second.object.get()))) return false;
    object = std::move(it->second.object);
    entries_.erase(it);
    return true;
  }

  /// Removes the object of `kind` behind `handle` and returns it, or null when
  /// there is none (already destroyed, never created, or another kind).
  template <class T>
  std::shared_ptr<T> take(const void* handle, Kind kind) {
    return std::static_pointer_cast<T>(takeErased(idOf(handle), kind));
  }

 private:
  struct Entry {
    Kind kind;
    std::shared_ptr<void> object;
  };

  HandleTable() = default;
  void insertErased(HandleId id, Kind kind, std::shared_ptr<void> object);
  HandleId insertNewErased(Kind kind, std::shared_ptr<void> object);
  std::shared_ptr<void> findErased(HandleId id, Kind kind) const;
  std::shared_ptr<void> findLocked(HandleId id, Kind kind) const;
  std::shared_ptr<void> takeErased(HandleId id, Kind kind);

  mutable std::mutex mutex_;
  std::unordered_map<HandleId, Entry> entries_;
  HandleId lastId_ = 0;
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_HANDLES_H_
