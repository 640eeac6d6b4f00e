// The ordered keyed store behind every list and set: insertion order,
// 1-based positions, optional unique keys compared without regard to case.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "tylhart/core/Error.hpp"
#include "tylhart/core/Text.hpp"
#include "tylhart/core/Variant.hpp"

namespace tylhart {

// A key probe made of one leading character and the rest, so that a set
// can look up "I" + a name without building the concatenated text.
struct PrefixedKey {
    char16_t first;
    TextView rest;
};

// Hashing and equality of keys without regard to case, usable with TextView
// and PrefixedKey probes so that look-ups allocate nothing.
struct CaseInsensitiveHash {
    using is_transparent = void;
    std::size_t operator()(TextView key) const noexcept { return fold(Basis, key); }
    std::size_t operator()(const PrefixedKey& key) const noexcept {
        return fold(step(Basis, key.first), key.rest);
    }

private:
    static constexpr std::size_t Basis = 14695981039346656037ull;
    static std::size_t step(std::size_t h, char16_t c) noexcept { return (h ^ foldCase(c)) * 1099511628211ull; }
    static std::size_t fold(std::size_t h, TextView key) noexcept {
        for (char16_t c : key) h = step(h, c);
        return h;
    }
};
struct CaseInsensitiveEqual {
    using is_transparent = void;
    bool operator()(TextView a, TextView b) const noexcept { return equalsIgnoringCase(a, b); }
    bool operator()(TextView a, const PrefixedKey& b) const noexcept {
        return a.size() == b.rest.size() + 1 && foldCase(a[0]) == foldCase(b.first) &&
               equalsIgnoringCase(a.substr(1), b.rest);
    }
    bool operator()(const PrefixedKey& a, TextView b) const noexcept { return (*this)(b, a); }
};

// The hash index of a large store: open addressing with linear probing
// over a power-of-two table of (hash, node) slots, at most three quarters
// full. A node holds its element's place, the key's hash and the key's
// characters, in one block, and never moves while the key is stored, so
// the element's entry points at it. A
// look-up compares full hashes before it reads a node, and neither finding
// a slot nor walking past another key's slot divides or hashes again; a
// removal shifts the slots after it back instead of leaving a tombstone.
template <class Place>
class KeyIndex {
public:
    struct Node {
        Place place;
        std::size_t hash;
        std::size_t length;
        TextView key() const noexcept { return {reinterpret_cast<const char16_t*>(this + 1), length}; }
    };

    KeyIndex() noexcept = default;
    KeyIndex(const KeyIndex&) = delete;
    KeyIndex& operator=(const KeyIndex&) = delete;
    KeyIndex(KeyIndex&& other) noexcept
        : slots_(std::move(other.slots_)), size_(std::exchange(other.size_, 0)) {}
    KeyIndex& operator=(KeyIndex&& other) noexcept {
        if (this != &other) {
            clear();
            slots_ = std::move(other.slots_);
            size_ = std::exchange(other.size_, 0);
        }
        return *this;
    }
    ~KeyIndex() { clear(); }

    std::size_t size() const noexcept { return size_; }
    // Room for N keys without growing the table.
    void reserve(std::size_t n) {
        if (n * 4 > slots_.size() * 3) rehash(std::bit_ceil(std::max<std::size_t>(16, n + n / 3 + 1)));
    }

    // Key is a TextView or a PrefixedKey.
    template <class Key>
    Node* find(const Key& key) const noexcept {
        return slots_.empty() ? nullptr : find(CaseInsensitiveHash{}(key), key);
    }
    // The node stored under Key, made when there is none; false when one
    // was there. Nothing changes when making it fails.
    std::pair<Node*, bool> tryEmplace(TextView key) {
        const std::size_t hash = CaseInsensitiveHash{}(key);
        if (!slots_.empty())
            if (Node* found = find(hash, key)) return {found, false};
        reserve(size_ + 1);
        void* memory = ::operator new(sizeof(Node) + key.size() * sizeof(char16_t));
        auto* node = new (memory) Node{Place{}, hash, key.size()};
        std::copy(key.begin(), key.end(), reinterpret_cast<char16_t*>(node + 1));
        slotFor(hash) = Slot{hash, node};
        ++size_;
        return {node, true};
    }
    void erase(Node* node) noexcept {
        std::size_t hole = node->hash & mask();
        while (slots_[hole].node != node) hole = (hole + 1) & mask();
        // Each later slot of the run moves back into the hole unless that
        // would put it before its home slot.
        for (std::size_t next = (hole + 1) & mask(); slots_[next].node; next = (next + 1) & mask()) {
            const std::size_t home = slots_[next].hash & mask();
            if (((next - home) & mask()) >= ((next - hole) & mask())) {
                slots_[hole] = slots_[next];
                hole = next;
            }
        }
        slots_[hole] = Slot{};
        release(node);
        --size_;
    }
    void clear() noexcept {
        for (const Slot& slot : slots_)
            if (slot.node) release(slot.node);
        slots_ = {};
        size_ = 0;
    }
    template <class F>
    void forEachNode(F&& f) const {
        for (const Slot& slot : slots_)
            if (slot.node) f(*slot.node);
    }

private:
    struct Slot {
        std::size_t hash = 0;
        Node* node = nullptr;
    };
    std::size_t mask() const noexcept { return slots_.size() - 1; }
    static void release(Node* node) noexcept {
        node->~Node();
        ::operator delete(node);
    }
    template <class Key>
    Node* find(std::size_t hash, const Key& key) const noexcept {
        for (std::size_t i = hash & mask();; i = (i + 1) & mask()) {
            const Slot& slot = slots_[i];
            if (!slot.node) return nullptr;
            if (slot.hash == hash && CaseInsensitiveEqual{}(slot.node->key(), key)) return slot.node;
        }
    }
    // The free slot where a new key with this hash goes.
    Slot& slotFor(std::size_t hash) noexcept {
        std::size_t i = hash & mask();
        while (slots_[i].node) i = (i + 1) & mask();
        return slots_[i];
    }
    void rehash(std::size_t capacity) {
        std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(capacity));
        for (const Slot& slot : old)
            if (slot.node) slotFor(slot.hash) = slot;
    }

    std::vector<Slot> slots_;
    std::size_t size_ = 0;
};

// Layout: entries live in blocks of at most Capacity entries, in order. A
// Fenwick tree over the block sizes turns a position into a block and an
// offset in O(log blocks), inside an array of a few kilobytes that stays in
// cache, so Item(i) costs about the same at a thousand elements as at a
// million. Inside a block an entry never moves while it stays there: the
// block keeps its entries densely in arrival order plus a permutation of
// 16-bit offsets (order: offset in the block -> slot, rank: slot -> offset),
// so an insertion or removal shifts one block's 2-byte offsets and touches
// no other block. A block only ever appended to (most of them: lists and
// sets are mostly built by appending) knows that its slots are its
// offsets, keeps no permutation at all, and a read skips it. A plain
// vector shifts the whole tail instead, and a linked list walks for a
// position; this costs O(Capacity + log n) for both.
// A key's index node records the block and slot of its entry, so a key
// finds its element in O(1) and its position in O(log n) (its rank plus the
// sizes of the blocks before it). A node is rewritten only when its entry
// changes slot: when a removal fills the hole with the block's last entry,
// and when blocks split or merge, which a block does at most once per
// quarter of its capacity of insertions or removals. 512 entries keep a
// block's offsets within 1 KB, shifted in a few dozen vector instructions,
// and a million elements within 2,000-odd blocks.
// A full block splits in halves, except at the end, where appending starts
// a new block so that stores built by appending stay full. A block below a
// quarter merges with a neighbour when both fit in half a block, so no two
// neighbours are both that small and there are at most 8n/Capacity + 1
// blocks. A small store (up to SmallSize elements: an enumerator set, a
// command's transactions) is a single vector of elements with their keys,
// in order, with no blocks, tree or hash index: a look-up compares the keys
// in turn, which for a few keys costs less than hashing one, and the whole
// store is one allocation. A store that outgrows it moves into blocks and
// the index for good, until it is empty again. An empty store allocates
// nothing.
// Errors are the runtime's: a bad position 9, a missing key 5, a duplicate
// key 457, and every refused call leaves the store unchanged.
template <class T, std::size_t Capacity = 512>
class KeyedStore {
    static_assert(Capacity >= 8 && Capacity <= 32768, "offsets are 16-bit");
    struct Block;
    struct Place {
        Block* block = nullptr;
        std::size_t slot = 0;
    };
    using Index = KeyIndex<Place>;
    using Node = typename Index::Node;
    struct Entry {
        T value;
        Node* node = nullptr;  // this element's key and place, when keyed
    };
    using Offset = std::uint16_t;
    struct Block {
        std::size_t ordinal = 0;    // position among the blocks
        std::vector<Entry> entries; // slots, in arrival order
        std::vector<Offset> order;  // offset in the block -> slot, unless ordered
        std::vector<Offset> rank;   // slot -> offset in the block, unless ordered
        bool ordered = true;        // every slot is its offset, as appending leaves a block
        std::size_t size() const noexcept { return entries.size(); }
        std::size_t slotAt(std::size_t offset) const noexcept { return ordered ? offset : order[offset]; }
        std::size_t offsetOf(std::size_t slot) const noexcept { return ordered ? slot : rank[slot]; }
    };
    static constexpr std::size_t SmallSize = std::min<std::size_t>(16, Capacity);
    struct SmallEntry {
        T value;
        std::optional<Text> key;
    };

public:
    KeyedStore() = default;
    KeyedStore(const KeyedStore& other) { *this = other; }
    KeyedStore& operator=(const KeyedStore& other) {
        if (this == &other) return *this;
        clear();
        if (!other.large_) {
            small_ = other.small_;
            size_ = other.size_;
            return *this;
        }
        reserve(other.size());
        if (large_) index_.reserve(other.index_.size());
        for (const auto& block : other.blocks_)
            for (std::size_t offset = 0; offset < block->size(); ++offset) {
                const std::size_t slot = block->slotAt(offset);
                const std::optional<TextView> key = other.keyAt(*block, slot);
                append(block->entries[slot].value, key ? std::optional<Text>(*key) : std::nullopt);
            }
        return *this;
    }
    KeyedStore(KeyedStore&& other) noexcept { *this = std::move(other); }
    KeyedStore& operator=(KeyedStore&& other) noexcept {
        if (this == &other) return *this;
        blocks_ = std::move(other.blocks_);
        tree_ = std::move(other.tree_);
        index_ = std::move(other.index_);
        small_ = std::move(other.small_);
        large_ = std::exchange(other.large_, false);
        size_ = std::exchange(other.size_, 0);
        other.clear();
        return *this;
    }

    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }

    // 0-based index of 1-based Position, or the subscript error.
    std::size_t positionIndex(std::int64_t position) const {
        if (position < 1 || static_cast<std::uint64_t>(position) > size_)
            errors::raise(errors::Runtime::SubscriptOutOfRange);
        return static_cast<std::size_t>(position - 1);
    }
    // 0-based index of the element stored under Key, or the missing-key error.
    template <class Key>
    std::size_t keyIndex(const Key& key) const {
        auto found = find(key);
        if (!found) errors::raise(errors::Runtime::InvalidCall);
        return *found;
    }
    // Key is a TextView or a PrefixedKey.
    template <class Key>
    std::optional<std::size_t> find(const Key& key) const {
        if (!large_) return smallFind(key);
        const Place at = placeOf(key);
        if (!at.block) return std::nullopt;
        return before(at.block->ordinal) + at.block->offsetOf(at.slot);
    }
    template <class Key>
    bool contains(const Key& key) const {
        if (!large_) return smallFind(key).has_value();
        return placeOf(key).block != nullptr;
    }
    // The element stored under Key, or null; needs no position.
    template <class Key>
    const T* lookup(const Key& key) const {
        if (!large_) {
            const auto at = smallFind(key);
            return at ? &small_[*at].value : nullptr;
        }
        const Place at = placeOf(key);
        return at.block ? &at.block->entries[at.slot].value : nullptr;
    }
    // The element stored under Key, or the missing-key error.
    template <class Key>
    const T& atKey(const Key& key) const {
        const T* found = lookup(key);
        if (!found) errors::raise(errors::Runtime::InvalidCall);
        return *found;
    }

    const T& operator[](std::size_t index) const noexcept {
        return large_ ? entryAt(index).value : small_[index].value;
    }
    T& operator[](std::size_t index) noexcept { return const_cast<T&>(std::as_const(*this)[index]); }
    const T& at(std::int64_t position) const { return (*this)[positionIndex(position)]; }

    // A Variant index as the collection of the platform reads it: a text is
    // a key, a number a position.
    std::size_t indexFor(const Variant& index) const {
        if (const Text* key = index.get<Text>()) return keyIndex(*key);
        if (index.isNull()) errors::raise(errors::Runtime::InvalidUseOfNull);
        if (index.isObject() || index.isMissing() || index.type() == VarType::ByteArray)
            errors::raise(errors::Runtime::TypeMismatch);
        return positionIndex(index.toLong());
    }

    // Inserts Value at 0-based Index (size() appends) under an optional key.
    void insert(std::size_t index, T value, std::optional<Text> key = std::nullopt) {
        if (!large_ && size_ >= SmallSize) moveToBlocks();
        if (!large_) {
            if (key && smallFind(TextView(*key))) errors::raise(errors::Runtime::DuplicateKey);
            makeRoom(small_);
            small_.insert(small_.begin() + static_cast<std::ptrdiff_t>(index), SmallEntry{std::move(value), std::move(key)});
            ++size_;
            return;
        }
        Node* node = nullptr;
        if (key) {
            auto [made, added] = index_.tryEmplace(*key);
            if (!added) errors::raise(errors::Runtime::DuplicateKey);
            node = made;
        }
        try {
            place(index, Entry{std::move(value), node});
        } catch (...) {
            if (node) index_.erase(node);
            throw;
        }
    }
    void append(T value, std::optional<Text> key = std::nullopt) {
        insert(size_, std::move(value), std::move(key));
    }

    void erase(std::size_t index) {
        if (!large_) {
            [[maybe_unused]] T removed = std::move(small_[index].value);  // released once the store is whole again
            small_.erase(small_.begin() + static_cast<std::ptrdiff_t>(index));
            --size_;
            return;
        }
        auto [b, offset] = locate(index);
        Block& block = *blocks_[b];
        unorderFor(block, offset);
        if (Node* node = block.entries[block.slotAt(offset)].node) index_.erase(node);
        unlink(b, offset);
    }
    // Removes the element stored under Key; false when there is none.
    template <class Key>
    bool eraseKey(const Key& key) {
        if (!large_) {
            const auto at = smallFind(key);
            if (at) erase(*at);
            return at.has_value();
        }
        const Place at = placeOf(key);
        if (!at.block) return false;
        unorderFor(*at.block, at.block->offsetOf(at.slot));
        const std::size_t offset = at.block->offsetOf(at.slot);
        if (Node* node = at.block->entries[at.slot].node) index_.erase(node);
        unlink(at.block->ordinal, offset);
        return true;
    }

    void clear() noexcept {
        blocks_.clear();
        tree_.clear();
        index_.clear();
        small_ = {};
        large_ = false;
        size_ = 0;
    }
    // Room for N elements without reallocating the block list, and the
    // first block sized for N when it fits in one.
    void reserve(std::size_t n) {
        if (!large_) {
            if (n <= SmallSize || size_ > 0) {
                small_.reserve(std::min(n, SmallSize));
                return;
            }
            large_ = true;  // an empty store that will not stay small starts in blocks
        }
        blocks_.reserve(n / Capacity + 1);
        if (blocks_.empty() && n > 0) {
            auto first = std::make_unique<Block>();
            first->entries.reserve(std::min(n, Capacity));
            blocks_.push_back(std::move(first));
        }
    }

    // Calls F on each element in order; an F that returns bool stops the
    // walk by returning false, and then forEach returns false.
    template <class F>
    bool forEach(F&& f) const {
        const auto call = [&](const T& value) {
            if constexpr (std::is_same_v<std::invoke_result_t<F&, const T&>, bool>) return f(value);
            else return f(value), true;
        };
        if (!large_) {
            for (const SmallEntry& e : small_)
                if (!call(e.value)) return false;
            return true;
        }
        return forEachEntry([&](const Entry& e) { return call(e.value); });
    }

    // Calls F(element, key) on each element in order, the key empty for an
    // element stored without one; F returns false to stop the walk.
    template <class F>
    bool forEachKeyed(F&& f) const {
        if (!large_) {
            for (const SmallEntry& e : small_)
                if (!f(e.value, e.key ? std::optional<TextView>(*e.key) : std::nullopt)) return false;
            return true;
        }
        for (const auto& block : blocks_)
            for (std::size_t offset = 0; offset < block->size(); ++offset) {
                const std::size_t slot = block->slotAt(offset);
                if (!f(block->entries[slot].value, keyAt(*block, slot))) return false;
            }
        return true;
    }

private:
    static TextView probe(TextView key) noexcept { return key; }
    static const PrefixedKey& probe(const PrefixedKey& key) noexcept { return key; }

    // Where the element stored under Key is; no block when there is none.
    template <class Key>
    Place placeOf(const Key& key) const {
        const Node* node = index_.find(probe(key));
        return node ? node->place : Place{};
    }
    std::optional<TextView> keyAt(const Block& block, std::size_t slot) const noexcept {
        return block.entries[slot].node ? std::optional(block.entries[slot].node->key()) : std::nullopt;
    }
    // Position of the small store's element stored under Key.
    template <class Key>
    std::optional<std::size_t> smallFind(const Key& key) const {
        for (std::size_t i = 0; i < small_.size(); ++i)
            if (small_[i].key && CaseInsensitiveEqual{}(TextView(*small_[i].key), probe(key))) return i;
        return std::nullopt;
    }
    // A small store that grows past SmallSize moves into one block, and its
    // keys into index nodes. Everything is allocated before any element
    // moves, so running out of memory here leaves the store as it was.
    void moveToBlocks() {
        Index index;
        auto block = std::make_unique<Block>();
        block->entries.reserve(std::min(Capacity, 2 * SmallSize));
        std::vector<Node*> nodes(small_.size(), nullptr);
        for (std::size_t slot = 0; slot < small_.size(); ++slot)
            if (small_[slot].key) {
                if (index.size() == 0) index.reserve(2 * SmallSize);  // a list without keys needs no table
                nodes[slot] = index.tryEmplace(*small_[slot].key).first;
                nodes[slot]->place = Place{block.get(), slot};
            }
        std::vector<std::unique_ptr<Block>> blocks;
        blocks.reserve(2);
        for (std::size_t slot = 0; slot < small_.size(); ++slot)
            block->entries.push_back(Entry{std::move(small_[slot].value), nodes[slot]});
        blocks.push_back(std::move(block));
        blocks_ = std::move(blocks);
        index_ = std::move(index);
        small_ = {};
        large_ = true;
        reshaped();
    }

    // Gives an ordered block its permutation, all or nothing, before an
    // entry other than its last leaves it.
    static void unorderFor(Block& block, std::size_t offset) {
        if (block.ordered && offset + 1 != block.size()) unorder(block, block.size());
    }
    static void unorder(Block& block, std::size_t room) {
        if (!block.ordered) return;
        std::vector<Offset> order, rank;
        order.reserve(room);
        rank.reserve(room);
        for (std::size_t i = 0; i < block.size(); ++i) {
            order.push_back(static_cast<Offset>(i));
            rank.push_back(static_cast<Offset>(i));
        }
        block.order = std::move(order);
        block.rank = std::move(rank);
        block.ordered = false;
    }

    template <class F>
    bool forEachEntry(F&& f) const {
        for (const auto& block : blocks_) {
            if (block->ordered) {
                for (const Entry& e : block->entries)
                    if (!f(e)) return false;
            } else {
                for (Offset slot : block->order)
                    if (!f(block->entries[slot])) return false;
            }
        }
        return true;
    }

    // Block and offset of the element at 0-based Index < size(): the last
    // block whose predecessors hold no more than Index elements.
    // Without branches: the steps of a random position's descent cannot
    // be predicted, and the tree's padding past the last block never fits.
    std::pair<std::size_t, std::size_t> locate(std::size_t index) const noexcept {
        if (blocks_.size() == 1) return {0, index};
        const std::size_t* tree = tree_.data();
        std::size_t b = 0;
        for (std::size_t step = tree_.size() / 2; step > 0; step >>= 1) {
            const std::size_t count = tree[b + step - 1];
            const bool fits = count <= index;
            b += fits ? step : 0;
            index -= fits ? count : 0;
        }
        return {b, index};
    }
    const Entry& entryAt(std::size_t index) const noexcept {
        auto [b, offset] = locate(index);
        const Block& block = *blocks_[b];
        return block.entries[block.slotAt(offset)];
    }
    // Elements in the blocks before block B.
    std::size_t before(std::size_t b) const noexcept {
        std::size_t sum = 0;
        if (blocks_.size() > 1)
            for (; b > 0; b &= b - 1) sum += tree_[b - 1];
        return sum;
    }
    // Block B gained (+1) or lost (-1) an element.
    void counted(std::size_t b, int delta) noexcept {
        if (delta > 0) ++size_;
        else --size_;
        if (blocks_.size() < 2) return;
        for (std::size_t i = b + 1; i <= blocks_.size(); i += i & (~i + 1))
            tree_[i - 1] += static_cast<std::size_t>(static_cast<std::ptrdiff_t>(delta));
    }
    // Renumbers the blocks and rebuilds the tree after blocks came or went;
    // the tree's room is reserved before the blocks change. The tree is
    // padded to a power of two with counts that no position reaches.
    void reshaped() noexcept {
        const std::size_t count = blocks_.size();
        for (std::size_t i = 0; i < count; ++i) blocks_[i]->ordinal = i;
        tree_.clear();
        if (count < 2) return;
        for (const auto& block : blocks_) tree_.push_back(block->size());
        tree_.resize(std::bit_ceil(count), std::numeric_limits<std::size_t>::max());
        for (std::size_t i = 1; i <= count; ++i)
            if (std::size_t parent = i + (i & (~i + 1)); parent <= count) tree_[parent - 1] += tree_[i - 1];
    }
    // Doubles a block vector's room up to a whole block, so that a small
    // store stays small and a full block never reallocates.
    template <class V>
    static void makeRoom(V& v) {
        if (v.size() == v.capacity()) v.reserve(std::min(Capacity, std::max<std::size_t>(4, 2 * v.capacity())));
    }

    void place(std::size_t index, Entry&& entry) {
        std::size_t b = 0, offset = 0;
        if (index == size_) {
            if (blocks_.empty() || blocks_.back()->size() == Capacity) {
                insertBlock(blocks_.size(), 0);
                reshaped();
            }
            b = blocks_.size() - 1;
            offset = blocks_[b]->size();
        } else {
            std::tie(b, offset) = locate(index);
            if (const std::size_t half = Capacity / 2; blocks_[b]->size() == Capacity) {
                split(b);
                if (offset >= half) ++b, offset -= half;
            }
        }
        // Only room is made before this point (a permutation made for a
        // block that had none is the same order); from here nothing throws.
        Block& block = *blocks_[b];
        makeRoom(block.entries);
        const auto slot = static_cast<Offset>(block.size());
        if (!(block.ordered && offset == slot)) {
            unorder(block, std::min(Capacity, std::max<std::size_t>(4, 2 * block.size())));
            makeRoom(block.order);
            makeRoom(block.rank);
            shiftRanks(block.rank, offset, 1);
            block.rank.push_back(static_cast<Offset>(offset));
            block.order.insert(block.order.begin() + static_cast<std::ptrdiff_t>(offset), slot);
        }
        if (entry.node) entry.node->place = Place{&block, slot};
        block.entries.push_back(std::move(entry));
        counted(b, +1);
    }

    // Removes the entry at Offset of block B, whose index node is already
    // gone; an ordered block loses only its last entry (unorderFor).
    void unlink(std::size_t b, std::size_t offset) noexcept {
        Block& block = *blocks_[b];
        const std::size_t slot = block.slotAt(offset);
        const std::size_t last = block.size() - 1;
        [[maybe_unused]] T removed = std::move(block.entries[slot].value);  // released once the store is whole again
        if (!block.ordered) {
            block.order.erase(block.order.begin() + static_cast<std::ptrdiff_t>(offset));
            shiftRanks(block.rank, offset + 1, static_cast<Offset>(-1));
            if (slot != last) relocate(block, last, slot);
            block.rank.pop_back();
        }
        block.entries.pop_back();
        counted(b, -1);
        if (blocks_.size() > 1) rebalance(b);
        if (size_ == 0) clear();  // an emptied store is small again
    }
    // Adds Delta to every offset from From on; nothing to do when From is
    // past the last. Sixteen at a time, so that the compiler turns the inner
    // loop into vector instructions: this runs on every insertion and
    // removal, and is what a block's size costs.
    static void shiftRanks(std::vector<Offset>& rank, std::size_t from, Offset delta) noexcept {
        if (from >= rank.size()) return;
        Offset* r = rank.data();
        const auto first = static_cast<Offset>(from);
        std::size_t i = 0;
        for (; i + 16 <= rank.size(); i += 16)
            for (std::size_t j = 0; j < 16; ++j) r[i + j] = static_cast<Offset>(r[i + j] + (r[i + j] >= first ? delta : 0));
        for (; i < rank.size(); ++i) r[i] = static_cast<Offset>(r[i] + (r[i] >= first ? delta : 0));
    }
    // Moves the entry in slot From of a block into its free slot To.
    static void relocate(Block& block, std::size_t from, std::size_t to) noexcept {
        Entry& moved = block.entries[to] = std::move(block.entries[from]);
        block.rank[to] = block.rank[from];
        block.order[block.rank[to]] = static_cast<Offset>(to);
        if (moved.node) moved.node->place.slot = to;
    }

    // A new empty block at position B with room for Room entries. The
    // caller renumbers the blocks (reshaped) once they are whole again, so
    // a split rebuilds the tree once.
    Block& insertBlock(std::size_t b, std::size_t room) {
        auto block = std::make_unique<Block>();
        block->entries.reserve(room);
        if (!blocks_.empty()) tree_.reserve(std::bit_ceil(blocks_.size() + 1));
        Block& added = *block;
        blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(b), std::move(block));
        return added;
    }
    // Moves the second half of full block B into a new block after it,
    // which receives its entries in order and so needs no permutation.
    void split(std::size_t b) {
        const std::size_t half = blocks_[b]->size() / 2;
        Block& into = insertBlock(b + 1, blocks_[b]->size() - half);
        Block& from = *blocks_[b];
        for (std::size_t k = half; k < from.size(); ++k) {
            Entry& e = from.entries[from.slotAt(k)];
            if (e.node) e.node->place = Place{&into, k - half};
            into.entries.push_back(std::move(e));
        }
        // Fill the slots left below Half with the staying entries above it
        // (an ordered block keeps exactly its first half of slots).
        if (!from.ordered) {
            std::size_t hole = 0;
            for (std::size_t s = half; s < from.size(); ++s) {
                if (from.rank[s] >= half) continue;
                while (from.rank[hole] < half) ++hole;
                relocate(from, s, hole++);
            }
            from.order.resize(half);
            from.rank.resize(half);
        }
        from.entries.erase(from.entries.begin() + static_cast<std::ptrdiff_t>(half), from.entries.end());
        reshaped();
    }
    // After block B lost an element: drop it when empty, merge it with a
    // neighbour when both are small.
    void rebalance(std::size_t b) noexcept {
        const std::size_t n = blocks_[b]->size();
        if (n == 0) {
            blocks_.erase(blocks_.begin() + static_cast<std::ptrdiff_t>(b));
            reshaped();
        } else if (n < Capacity / 4) {
            if (b + 1 < blocks_.size() && n + blocks_[b + 1]->size() <= Capacity / 2) merge(b);
            else if (b > 0 && n + blocks_[b - 1]->size() <= Capacity / 2) merge(b - 1);
        }
    }
    // Appends block B + 1 to block B. Without memory for it the blocks
    // simply stay apart.
    void merge(std::size_t b) noexcept {
        Block& into = *blocks_[b];
        Block& from = *blocks_[b + 1];
        const std::size_t base = into.size(), total = base + from.size();
        const bool ordered = into.ordered && from.ordered;
        try {
            into.entries.reserve(total);
            if (!ordered) {
                unorder(into, total);
                unorder(from, from.size());
                into.order.reserve(total);
                into.rank.reserve(total);
            }
        } catch (const std::bad_alloc&) {
            return;
        }
        for (std::size_t s = 0; s < from.size(); ++s) {
            Entry& e = from.entries[s];
            if (e.node) e.node->place = Place{&into, base + s};
            into.entries.push_back(std::move(e));
            if (!ordered) into.rank.push_back(static_cast<Offset>(base + from.rank[s]));
        }
        if (!ordered)
            for (Offset slot : from.order) into.order.push_back(static_cast<Offset>(base + slot));
        blocks_.erase(blocks_.begin() + static_cast<std::ptrdiff_t>(b + 1));
        reshaped();
    }

    std::vector<std::unique_ptr<Block>> blocks_;
    std::vector<std::size_t> tree_;  // Fenwick tree of block sizes, when there are two or more blocks
    Index index_;                   // keys, in a large store
    std::vector<SmallEntry> small_;  // the elements and keys of a small store
    bool large_ = false;             // in blocks, past SmallSize elements
    std::size_t size_ = 0;
};

}  // namespace tylhart
