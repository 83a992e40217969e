// SPDX-License-Identifier: BSD-3-Clause

// dump_outputs FILE...: the contents of outputs according to the C++ readers, as bytes on standard
// output for test_cpp_readers.py: for a .vcs all samples, then their times; for a .vev times, then
// values; for a .vrd times, TTL values and values, each as long as the numbers in the files.

#include <cstdint>
#include <cstdio>
#include <iostream>
#include <span>
#include <string>
#include <vector>

#include "outputs/channel_file.h"
#include "outputs/event_file.h"
#include "outputs/raw_data_file.h"
#include "outputs/raw_record.h"
#include "platform/text_encoding.h"

namespace {

using namespace stalwick;

template <typename Value>
void Write(const std::vector<Value>& values) {
    std::fwrite(values.data(), sizeof(Value), values.size(), stdout);
}

int Fail(const RecordFileError& error) {
    std::cerr << ToUtf8(error.text) << '\n';
    return 1;
}

int DumpChannel(const std::wstring& path) {
    ChannelFile file;
    if (const auto error = file.Open(path)) return Fail(error);
    std::vector<VtxDataTypes::CRRec> records(file.RecordCount());
    if (const auto error = file.ReadRecords(0, records)) return Fail(error);
    std::vector<std::int16_t> samples;
    std::vector<std::uint64_t> times;
    for (const auto& record : records) {
        for (std::uint64_t i = 0; i < record.numValidSamples; ++i) {
            samples.push_back(record.samples[i]);
            times.push_back(record.timestamp + i * 1'000'000 / record.sampleFrequency);
        }
    }
    Write(samples);
    Write(times);
    return 0;
}

int DumpEvents(const std::wstring& path) {
    EventFile file;
    if (const auto error = file.Open(path)) return Fail(error);
    std::vector<VtxDataTypes::EventRec> records(file.RecordCount());
    if (const auto error = file.ReadRecords(0, records)) return Fail(error);
    std::vector<std::uint64_t> times;
    std::vector<std::uint16_t> values;
    for (const auto& record : records) {
        times.push_back(record.timestamp);
        values.push_back(record.ttlValue);
    }
    Write(times);
    Write(values);
    return 0;
}

int DumpRawData(const std::wstring& path) {
    RawDataFile file;
    if (const auto error = file.Open(path)) return Fail(error);
    std::vector<std::uint32_t> words(file.RecordCount() * file.RecordWords());
    if (const auto error = file.ReadRecords(0, words)) return Fail(error);
    std::vector<std::uint64_t> times;
    std::vector<std::uint32_t> ttl;
    std::vector<std::int32_t> values;
    const std::span<const std::uint32_t> all = words;
    for (std::size_t start = 0; start < all.size(); start += file.RecordWords()) {
        const RawRecordView record(all.subspan(start, file.RecordWords()));
        times.push_back(record.Timestamp());
        ttl.push_back(record.TtlValue());
        for (std::size_t c = 0; c < record.SampleCount(); ++c) values.push_back(record.Sample(c));
    }
    Write(times);
    Write(ttl);
    Write(values);
    return 0;
}

int Dump(const std::string& path) {
    const std::wstring wide = FromUtf8(path);
    if (path.ends_with(".vcs")) return DumpChannel(wide);
    if (path.ends_with(".vev")) return DumpEvents(wide);
    return DumpRawData(wide);
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (Dump(argv[i]) != 0) return 1;
    }
    return 0;
}
