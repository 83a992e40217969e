// SPDX-License-Identifier: BSD-3-Clause

// The Python module stalwick._ord, which python/stalwick/decoder.py imports.

#include <cstring>
#include <stdexcept>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "outputs/vtx_data_types.h"
#include "platform/text_encoding.h"
#include "python/ord_module/indexed_recording.h"
#include "python/ord_module/sample_order.h"

namespace py = pybind11;

namespace stalwick {

namespace {

template <typename Value>
py::array_t<Value> ToArray(const std::vector<Value>& values) {
    return py::array_t<Value>(static_cast<py::ssize_t>(values.size()), values.data());
}

template <typename Value>
std::vector<Value> FromArray(const py::handle& object) {
    const auto array =
        py::array_t<Value, py::array::c_style | py::array::forcecast>::ensure(object);
    if (!array) throw std::invalid_argument("the index is no index of a recording");
    return std::vector<Value>(array.data(), array.data() + array.size());
}

std::string GroupKey(const char* name, std::size_t group) {
    return name + std::to_string(group);
}

// Arrays by name, which numpy can save unchanged.
py::dict ToDict(const RecordingIndex& index) {
    py::dict dict;
    constexpr std::size_t kColumns = 1 + kSampleGroups;
    std::vector<std::uint64_t> spans;
    for (const IndexedSpan& span : index.spans) {
        spans.push_back(span.position);
        spans.insert(spans.end(), span.first.begin(), span.first.end());
    }
    const auto rows = static_cast<py::ssize_t>(index.spans.size());
    dict["spans"] = ToArray(spans).reshape({rows, static_cast<py::ssize_t>(kColumns)});
    for (std::size_t g = 0; g < kSampleGroups; ++g) {
        dict[GroupKey("record_times", g).c_str()] = ToArray(index.recordTimes[g]);
    }
    dict["samples"] = py::array_t<std::uint64_t>(kSampleGroups, index.samples.data());
    dict["carried_channels"] = index.carriedChannels;
    dict["event_times"] = ToArray(index.eventTimes);
    dict["event_values"] = ToArray(index.eventValues);
    dict["first_ttl"] = index.firstTtl ? static_cast<int>(*index.firstTtl) : -1;
    dict["end"] = index.end;
    dict["ends_in_damage"] = index.endsInDamage;
    return dict;
}

// The part needed for reading: spans and numbers of samples.
RecordingIndex FromDict(const py::dict& dict) {
    RecordingIndex index;
    const auto spans = FromArray<std::uint64_t>(dict["spans"]);
    for (std::size_t i = 0; i + kSampleGroups < spans.size(); i += 1 + kSampleGroups) {
        IndexedSpan span{spans[i], {}};
        std::copy_n(&spans[i + 1], kSampleGroups, span.first.begin());
        index.spans.push_back(span);
    }
    const auto samples = FromArray<std::uint64_t>(dict["samples"]);
    if (samples.size() != kSampleGroups) {
        throw std::invalid_argument("the index is no index of a recording");
    }
    std::copy(samples.begin(), samples.end(), index.samples.begin());
    return index;
}

py::dict HeaderDict(const RecordingHeader& header) {
    py::dict dict;
    dict["NumADChannels"] = header.numADChannels;
    dict["SamplingFrequency"] = header.samplingFrequency;
    dict["ADMaxValue"] = header.adMaxValue;
    dict["ADBitVolts"] = header.adBitVolts;
    dict["InputRange"] = header.inputRange;
    dict["FileVersion"] = header.fileVersion;
    dict["UTCOffsetMicroseconds"] = header.utcOffsetMicroseconds;
    dict["SessionUUID"] = header.sessionUuid;
    dict["AcquisitionSystem"] = header.acquisitionSystem;
    dict["BaseIMUAvailable"] = header.baseImuAvailable;
    dict["AfeIMUAvailable"] = header.afeImuAvailable;
    dict["UltrasonicAvailable"] = header.ultrasonicAvailable;
    return dict;
}

// A recording with its current index.
class Recording {
  public:
    explicit Recording(const std::string& path) : recording_(FromUtf8(path)) {}

    py::dict Header() const { return HeaderDict(recording_.Header()); }

    py::dict BuildIndex() {
        {
            const py::gil_scoped_release others;
            index_ = recording_.BuildIndex();
        }
        return ToDict(index_);
    }

    void UseIndex(const py::dict& dict) { index_ = FromDict(dict); }

    // rows[channel, sample]: samples from `start` on of the channels, as many as a row is long.
    void Read(std::uint32_t group, const std::vector<std::uint32_t>& channels, std::uint64_t start,
              py::array_t<std::int16_t> rows) {
        if (rows.ndim() != 2 || rows.shape(0) != static_cast<py::ssize_t>(channels.size()) ||
            (rows.shape(1) > 1 && rows.strides(1) != sizeof(std::int16_t)) ||
            group >= kSampleGroups) {
            throw std::invalid_argument("rows do not fit what is read");
        }
        const auto count = static_cast<std::uint64_t>(rows.shape(1));
        if (count > index_.samples[group] || start > index_.samples[group] - count) {
            throw std::out_of_range("there are fewer samples");
        }
        if (channels.empty() || count == 0) return;
        SampleRequest request{static_cast<SampleGroup>(group), channels, start, count, {}};
        for (py::ssize_t i = 0; i < rows.shape(0); ++i) {
            request.rows.push_back(rows.mutable_data(i, 0));
        }
        const py::gil_scoped_release others;
        recording_.Read(index_, request);
    }

  private:
    IndexedRecording recording_;
    RecordingIndex index_;
};

// rows[channel, sample] to out[sample, channel].
void Interleave(const py::array_t<std::int16_t>& rows, py::array_t<std::int16_t> out) {
    if (rows.ndim() != 2 || out.ndim() != 2 || rows.shape(0) != out.shape(1) ||
        rows.shape(1) != out.shape(0) || (out.flags() & py::array::c_style) == 0 ||
        (rows.shape(1) > 1 && rows.strides(1) != sizeof(std::int16_t))) {
        throw std::invalid_argument("the arrays do not fit each other");
    }
    std::vector<const std::int16_t*> channels;
    for (py::ssize_t i = 0; i < rows.shape(0) && rows.shape(1) > 0; ++i) {
        channels.push_back(rows.data(i, 0));
    }
    if (channels.empty()) return;
    const auto count = static_cast<std::size_t>(rows.shape(1));
    std::int16_t* const to = out.mutable_data();
    const py::gil_scoped_release others;
    InterleaveChannels(channels, count, to);
}

using Bytes = py::array_t<std::uint8_t, py::array::c_style>;
using Words = py::array_t<std::uint32_t, py::array::c_style>;

// Samples of full records, from `skipped` in the first one on, to out[sample, channel]: files[i]
// are the records of a channel, from the first on. Returns the position of a channel with a record
// that has another head than heads[record, word], or -1.
py::ssize_t InterleaveFiles(const std::vector<Bytes>& files, const Words& channelNumbers,
                            std::size_t firstRecord, const Words& heads, std::size_t skipped,
                            py::array_t<std::int16_t> out) {
    constexpr py::ssize_t kRecordBytes = sizeof(VtxDataTypes::CRRec);
    const auto channels = static_cast<py::ssize_t>(files.size());
    if (out.ndim() != 2 || out.shape(1) != channels || (out.flags() & py::array::c_style) == 0 ||
        channelNumbers.size() != channels || heads.ndim() != 2 || heads.shape(1) != 5 ||
        skipped >= VtxDataTypes::kSamplesPerRecord) {
        throw std::invalid_argument("the arrays do not fit each other");
    }
    const auto count = static_cast<std::size_t>(out.shape(0));
    const auto records = static_cast<std::size_t>(heads.shape(0));
    if (skipped + count > records * VtxDataTypes::kSamplesPerRecord) {
        throw std::out_of_range("there are fewer samples");
    }
    std::vector<const std::uint8_t*> starts;
    for (const Bytes& file : files) {
        if (static_cast<std::size_t>(file.size() / kRecordBytes) < firstRecord + records) {
            throw std::out_of_range("there are fewer records");
        }
        starts.push_back(file.data());
    }
    const MappedRecords mapped{
        starts,
        {channelNumbers.data(), static_cast<std::size_t>(channelNumbers.size())},
        {heads.data(), static_cast<std::size_t>(heads.size())},
        firstRecord};
    std::int16_t* const to = out.mutable_data();
    const py::gil_scoped_release others;
    const auto wrong = InterleaveRecords(mapped, skipped, count, to);
    return wrong ? static_cast<py::ssize_t>(*wrong) : -1;
}

}  // namespace

}  // namespace stalwick

PYBIND11_MODULE(_ord, module) {
    using stalwick::Recording;
    module.doc() = "Decodes recordings and orders samples, for the package stalwick.";
    // Without conversion: anything written to a copy would be lost.
    module.def("interleave", &stalwick::Interleave, py::arg().noconvert(), py::arg().noconvert());
    module.def("interleave_files", &stalwick::InterleaveFiles, py::arg(), py::arg(), py::arg(),
               py::arg(), py::arg(), py::arg().noconvert());
    py::class_<Recording>(module, "Recording")
        .def(py::init<const std::string&>())
        .def("header", &Recording::Header)
        .def("build_index", &Recording::BuildIndex)
        .def("use_index", &Recording::UseIndex)
        .def("read", &Recording::Read);
}
