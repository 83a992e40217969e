// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/conversion_job.h"
#include "tests/support/reference_converter.h"
#include "tests/support/temp_directory.h"

namespace stalwick::test {

/** Settings for fast conversions: they do not wait for the disk. */
OutputSettings QuickSettings();

/** The result of one job with one recording. */
struct EngineRun {
    std::wstring statusText;
    std::wstring errorText;  // of the processor
    std::vector<ConversionDetail> details;
    std::uint64_t recordsProcessed = 0;
    std::map<std::string, std::string> files;  // of the recording's own output directory
};

/** Writes the recording as in/`name` into the directory and returns its path. */
std::wstring PutRecording(const TempDirectory& directory, const std::string& recording,
                          const std::wstring& name = L"rec.ord");

/** The job for these options; outputs go to the directory out/. */
ConversionJob MakeJob(const TempDirectory& directory, const std::vector<std::wstring>& inputFiles,
                      const ReferenceConvertOptions& options, DataProcessor& processor,
                      std::wstring& statusText);

/** Converts one recording with the engine, with FixedIdentity in place. */
EngineRun RunEngine(
    const TempDirectory& directory, const std::string& recording,
    const ReferenceConvertOptions& options, const OutputSettings& settings = QuickSettings(),
    std::shared_ptr<ParallelConversions> parallel = std::make_shared<ParallelConversions>(1));

/** What the reference needs to convert `rec.ord` as the engine does under FixedIdentity. */
ReferenceConvertInput ReferenceInput(const std::string& recording,
                                     const ReferenceConvertOptions& options,
                                     const std::wstring& outputDirectory);

/** The same conversion by the reference. */
ReferenceConvertResult RunReference(const TempDirectory& directory, const std::string& recording,
                                    const ReferenceConvertOptions& options);

/** Names the first difference instead of printing both. */
testing::AssertionResult SameBytes(const std::string& actual, const std::string& expected);
testing::AssertionResult SameFiles(const std::map<std::string, std::string>& actual,
                                   const std::map<std::string, std::string>& expected);

/** Converts with both: status, error text, packet count and every byte of every file. */
testing::AssertionResult ConvertsLikeTheReference(const std::string& recording,
                                                  const ReferenceConvertOptions& options,
                                                  const OutputSettings& settings = QuickSettings());

/** Every output switch on. */
ReferenceConvertOptions AllOutputs();

}  // namespace stalwick::test
