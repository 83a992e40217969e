// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <vector>

namespace stalwick {

// A vector that may be absent. Unlike std::optional it keeps its memory while absent, so that
// decoding into the same packet again and again does not allocate.
template <typename T>
class OptionalVector {
  public:
    bool has_value() const { return engaged_; }
    explicit operator bool() const { return engaged_; }

    // Makes it present and empty.
    std::vector<T>& emplace() {
        engaged_ = true;
        values_.clear();
        return values_;
    }
    // Makes it present with its previous contents; the caller overwrites all of them.
    std::vector<T>& engage_keeping_contents() {
        engaged_ = true;
        return values_;
    }
    void reset() { engaged_ = false; }

    // Only while present.
    std::vector<T>& operator*() { return values_; }
    const std::vector<T>& operator*() const { return values_; }
    std::vector<T>* operator->() { return &values_; }
    const std::vector<T>* operator->() const { return &values_; }

    friend bool operator==(const OptionalVector& a, const OptionalVector& b) {
        return a.engaged_ == b.engaged_ && (!a.engaged_ || a.values_ == b.values_);
    }

  private:
    bool engaged_ = false;
    std::vector<T> values_;
};

}  // namespace stalwick
