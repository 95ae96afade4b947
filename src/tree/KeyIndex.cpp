#include "tree/KeyIndex.h"

#include <algorithm>

namespace quarl::tree {
namespace {

constexpr unsigned kFirstBits = 6;

constexpr unsigned kRunBits = 3;  // so many low bits of an id leave it in the same run of places

// A table is at most seven tenths full.
std::size_t Limit(unsigned bits) {
  return (std::size_t{1} << bits) / 10 * 7;
}

}  // namespace

std::size_t KeyIndex::PlaceOf(NodeKey::Parts key) const {
  const auto id = static_cast<quint32>(key.id);
  const quint64 run = quint64{static_cast<quint8>(key.kind)} << 32 | id >> kRunBits;
  const quint64 hash = run * 0x9E3779B97F4A7C15U;
  return static_cast<std::size_t>(hash >> (64 - bits_ + kRunBits)) << kRunBits | (id & ((1U << kRunBits) - 1));
}

quint32 KeyIndex::TagOf(NodeKey::Parts key) const {
  return (static_cast<quint32>(key.id) + static_cast<quint8>(key.kind)) * 0x9E3779B1U & ~mask_;
}

KeyIndex::KeyIndex() {
  Rebuild(kFirstBits, {});
}

void KeyIndex::Rebuild(unsigned bits, std::span<const TreeNode> nodes) {
  std::vector<quint32> old(std::size_t{1} << bits, 0);
  old.swap(places_);
  const quint32 oldMask = mask_;
  bits_ = bits;
  mask_ = static_cast<quint32>((quint64{1} << bits) - 1);
  for (const quint32 entry : old) {
    const NodeId id = entry & oldMask;
    if (id == 0) continue;
    std::size_t place = PlaceOf(nodes[id].Key());
    while (places_[place] != 0) place = Next(place);
    places_[place] = TagOf(nodes[id].Key()) | id;
  }
}

void KeyIndex::Reserve(std::size_t count, std::span<const TreeNode> nodes) {
  unsigned bits = bits_;
  while (Limit(bits) < count) ++bits;
  if (bits != bits_) Rebuild(bits, nodes);
}

NodeId KeyIndex::Find(NodeKey::Parts key, std::span<const TreeNode> nodes) const {
  const quint32 tag = TagOf(key);
  for (std::size_t place = PlaceOf(key); places_[place] != 0; place = Next(place)) {
    const quint32 entry = places_[place];
    if ((entry & ~mask_) == tag && nodes[entry & mask_].Key() == key) return entry & mask_;
  }
  return kTop;
}

bool KeyIndex::Insert(NodeId id, std::span<const TreeNode> nodes) {
  if (count_ + 1 > Limit(bits_)) Rebuild(bits_ + 1, nodes);
  const NodeKey::Parts key = nodes[id].Key();
  const quint32 tag = TagOf(key);
  std::size_t place = PlaceOf(key);
  for (; places_[place] != 0; place = Next(place)) {
    const quint32 entry = places_[place];
    if ((entry & ~mask_) == tag && nodes[entry & mask_].Key() == key) return false;
  }
  places_[place] = tag | id;
  ++count_;
  return true;
}

void KeyIndex::Erase(NodeId id, std::span<const TreeNode> nodes) {
  std::size_t hole = PlaceOf(nodes[id].Key());
  while ((places_[hole] & mask_) != id) hole = Next(hole);
  // Entries that a probe would no longer reach across the hole move into it.
  for (std::size_t place = Next(hole); places_[place] != 0; place = Next(place)) {
    const std::size_t home = PlaceOf(nodes[places_[place] & mask_].Key());
    if (((place - home) & mask_) >= ((place - hole) & mask_)) {
      places_[hole] = places_[place];
      hole = place;
    }
  }
  places_[hole] = 0;
  --count_;
}

}  // namespace quarl::tree
