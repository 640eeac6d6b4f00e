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

// Position access and key look-up are O(1): elements live in a vector and a
// hash index maps each folded key to its position. Inserting or removing in
// the middle shifts the tail once and renumbers only the shifted keys.
// Errors are the runtime's: a bad position 9, a missing key 5, a duplicate
// key 457, and every refused call leaves the store unchanged.
template <class T>
class KeyedStore {
public:
    std::size_t size() const noexcept { return entries_.size(); }
    bool empty() const noexcept { return entries_.empty(); }

    // 0-based index of 1-based Position, or the subscript error.
    std::size_t positionIndex(std::int64_t position) const {
        if (position < 1 || static_cast<std::uint64_t>(position) > entries_.size())
            errors::raise(errors::Runtime::SubscriptOutOfRange);
        return static_cast<std::size_t>(position - 1);
    }
    // 0-based index of the element stored under Key, or the missing-key error.
    std::size_t keyIndex(TextView key) const {
        auto found = find(key);
        if (!found) errors::raise(errors::Runtime::InvalidCall);
        return *found;
    }
    std::optional<std::size_t> find(TextView key) const {
        auto it = index_.find(foldCase(key));
        if (it == index_.end()) return std::nullopt;
        return it->second;
    }
    bool contains(TextView key) const { return find(key).has_value(); }

    const T& operator[](std::size_t index) const noexcept { return entries_[index].value; }
    T& operator[](std::size_t index) noexcept { return entries_[index].value; }
    const T& at(std::int64_t position) const { return entries_[positionIndex(position)].value; }

    // A Variant index as the collection of the platform reads it: a text is
    // a key, a number a position.
    std::size_t indexFor(const Variant& index) const {
        if (const Text* key = index.get<Text>()) return keyIndex(*key);
        if (index.isObject() || index.isMissing() || index.type() == VarType::ByteArray)
            errors::raise(errors::Runtime::TypeMismatch);
        return positionIndex(index.toLong());
    }

    // Inserts Value at 0-based Index (size() appends) under an optional key.
    void insert(std::size_t index, T value, std::optional<Text> key = std::nullopt) {
        Text folded;
        if (key) {
            folded = foldCase(*key);
            if (index_.contains(folded)) errors::raise(errors::Runtime::DuplicateKey);
        }
        entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(index),
                        Entry{std::move(value), key.has_value(), folded});
        if (key) index_.emplace(std::move(folded), index);
        renumberFrom(index + 1);
    }
    void append(T value, std::optional<Text> key = std::nullopt) {
        insert(entries_.size(), std::move(value), std::move(key));
    }

    void erase(std::size_t index) {
        if (entries_[index].keyed) index_.erase(entries_[index].foldedKey);
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
    struct Entry {
        T value;
        bool keyed = false;
        Text foldedKey;
    };

    void renumberFrom(std::size_t first) {
        if (index_.empty()) return;
        for (std::size_t i = first; i < entries_.size(); ++i)
            if (entries_[i].keyed) index_[entries_[i].foldedKey] = i;
    }

    std::vector<Entry> entries_;
    std::unordered_map<Text, std::size_t> index_;
};

}  // namespace tylhart
