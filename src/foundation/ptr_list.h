#pragma once
// Growable list of owned pointers for stage lists. Entries may be null (loops skip them); any
// indexed access outside the list throws std::invalid_argument, as hosts expect of their
// framework's pointer array. The MFC-style names let host code written for that array compile.
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace digitfilt {

template <class T>
class PtrList {
 public:
  PtrList() = default;
  PtrList(const PtrList&) = delete;  // owners decide whether a copy is deep
  PtrList& operator=(const PtrList&) = delete;
  PtrList(PtrList&&) noexcept = default;
  PtrList& operator=(PtrList&&) noexcept = default;

  std::int64_t size() const { return static_cast<std::int64_t>(items_.size()); }
  bool empty() const { return items_.empty(); }

  // Checked access; the entry itself may be null.
  T* at(std::int64_t i) const { return items_[checked(i)].get(); }
  T* operator[](std::int64_t i) const { return at(i); }

  // Appends (a null entry too) and returns the new entry's index.
  std::int64_t add(std::unique_ptr<T> item) {
    items_.push_back(std::move(item));
    return size() - 1;
  }
  // Replaces entry i, growing the list with null entries when i is past the end.
  void setAtGrow(std::int64_t i, std::unique_ptr<T> item) {
    if (i < 0) throw std::invalid_argument("PtrList: negative index");
    if (i >= size()) items_.resize(static_cast<std::size_t>(i) + 1);
    items_[static_cast<std::size_t>(i)] = std::move(item);
  }
  // Shrinking destroys the dropped entries; growing adds null entries.
  void setSize(std::int64_t n) {
    if (n < 0) throw std::invalid_argument("PtrList: negative size");
    items_.resize(static_cast<std::size_t>(n));
  }
  // Destroys entry i and leaves a null in its place.
  void reset(std::int64_t i) { items_[checked(i)].reset(); }
  // Gives up ownership of entry i, leaving a null.
  std::unique_ptr<T> release(std::int64_t i) { return std::move(items_[checked(i)]); }
  void clear() { items_.clear(); }

  // MFC-style spellings. Add and SetAtGrow take ownership of the raw pointer.
  std::int64_t GetSize() const { return size(); }
  std::int64_t GetCount() const { return size(); }
  std::int64_t GetUpperBound() const { return size() - 1; }
  T* GetAt(std::int64_t i) const { return at(i); }
  std::int64_t Add(T* item) { return add(std::unique_ptr<T>(item)); }
  void SetAtGrow(std::int64_t i, T* item) { setAtGrow(i, std::unique_ptr<T>(item)); }
  void SetSize(std::int64_t n) { setSize(n); }
  void RemoveAll() { clear(); }

  // Iteration over the owning slots (null entries included).
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  std::size_t checked(std::int64_t i) const {
    if (i < 0 || i >= size()) throw std::invalid_argument("PtrList: index out of range");
    return static_cast<std::size_t>(i);
  }

  std::vector<std::unique_ptr<T>> items_;
};

}  // namespace digitfilt
