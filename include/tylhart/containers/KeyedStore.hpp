// The ordered keyed store behind every list and set: insertion order,
// 1-based positions, optional unique keys compared without regard to case.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
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

// Position access and key look-up are O(1): elements live in a vector and a
// hash index maps each key to its position. Inserting or removing in the
// middle shifts the tail once and renumbers only the shifted keys. An
// element points at its own index slot (node addresses are stable), so an
// unkeyed element costs one pointer.
// Errors are the runtime's: a bad position 9, a missing key 5, a duplicate
// key 457, and every refused call leaves the store unchanged.
template <class T>
class KeyedStore {
public:
    KeyedStore() = default;
    KeyedStore(const KeyedStore& other) { *this = other; }
    KeyedStore& operator=(const KeyedStore& other) {
        if (this == &other) return *this;
        clear();
        reserve(other.size());
        for (const Entry& e : other.entries_)
            append(e.value, e.slot ? std::optional<Text>(e.slot->first) : std::nullopt);
        return *this;
    }
    KeyedStore(KeyedStore&&) noexcept = default;
    KeyedStore& operator=(KeyedStore&&) noexcept = default;

    std::size_t size() const noexcept { return entries_.size(); }
    bool empty() const noexcept { return entries_.empty(); }

    // 0-based index of 1-based Position, or the subscript error.
    std::size_t positionIndex(std::int64_t position) const {
        if (position < 1 || static_cast<std::uint64_t>(position) > entries_.size())
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
        auto it = index_.find(probe(key));
        if (it == index_.end()) return std::nullopt;
        return it->second;
    }
    template <class Key>
    bool contains(const Key& key) const {
        return index_.find(probe(key)) != index_.end();
    }

    const T& operator[](std::size_t index) const noexcept { return entries_[index].value; }
    T& operator[](std::size_t index) noexcept { return entries_[index].value; }
    const T& at(std::int64_t position) const { return entries_[positionIndex(position)].value; }

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
        Slot* slot = nullptr;
        if (key) {
            auto [it, added] = index_.try_emplace(std::move(*key), index);
            if (!added) errors::raise(errors::Runtime::DuplicateKey);
            slot = &*it;
        }
        try {
            entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(index), Entry{std::move(value), slot});
        } catch (...) {
            if (slot) index_.erase(slot->first);
            throw;
        }
        renumberFrom(index + 1);
    }
    void append(T value, std::optional<Text> key = std::nullopt) {
        insert(entries_.size(), std::move(value), std::move(key));
    }

    void erase(std::size_t index) {
        if (Slot* slot = entries_[index].slot) index_.erase(slot->first);
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
        renumberFrom(index);
    }

    void clear() noexcept {
        entries_.clear();
        index_.clear();
    }
    void reserve(std::size_t n) {
        entries_.reserve(n);
        index_.reserve(n);
    }

    template <class F>
    void forEach(F&& f) const {
        for (const Entry& e : entries_) f(e.value);
    }

private:
    using Index = std::unordered_map<Text, std::size_t, CaseInsensitiveHash, CaseInsensitiveEqual>;
    using Slot = typename Index::value_type;
    struct Entry {
        T value;
        Slot* slot = nullptr;  // this element's key and position, when keyed
    };

    static TextView probe(TextView key) noexcept { return key; }
    static const PrefixedKey& probe(const PrefixedKey& key) noexcept { return key; }

    void renumberFrom(std::size_t first) noexcept {
        if (index_.empty()) return;
        for (std::size_t i = first; i < entries_.size(); ++i)
            if (entries_[i].slot) entries_[i].slot->second = i;
    }

    std::vector<Entry> entries_;
    Index index_;
};

}  // namespace tylhart
