// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "survey/verify_report.h"

namespace stalwick {

// The position of a finding in a file.
struct FindingPlace {
    std::optional<std::uint64_t> record = std::nullopt;  // from 0
    std::optional<std::uint64_t> byte = std::nullopt;
};

// Collects the findings of one file for its set: lists the first ones, counts all.
class FindingLog {
  public:
    FindingLog(VerifiedSet& set, std::wstring path, std::size_t mostListed)
        : set_(&set), path_(std::move(path)), mostListed_(mostListed) {}

    void Add(const FindingPlace& place, std::wstring text) {
        ++set_->findingCount;
        if (++count_ > mostListed_) {
            ++set_->unlisted[path_];
            return;
        }
        set_->findings.push_back({path_, place.record, place.byte, std::move(text)});
    }

    const std::wstring& Path() const { return path_; }
    [[nodiscard]] std::uint64_t Count() const { return count_; }

  private:
    VerifiedSet* set_;
    std::wstring path_;
    std::size_t mostListed_;
    std::uint64_t count_ = 0;
};

}  // namespace stalwick
