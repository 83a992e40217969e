// SPDX-License-Identifier: BSD-3-Clause
#include "survey/header_check.h"

#include <algorithm>
#include <map>
#include <utility>

#include "outputs/header_text.h"
#include "outputs/output_format.h"
#include "platform/text_encoding.h"
#include "survey/finding_log.h"

namespace stalwick {

namespace {

constexpr std::wstring_view kApplication = L"\"Veltrosyn Stalwick\" \"";
constexpr std::wstring_view kSystemPrefix = L"Unknown ";

std::wstring DefaultNotation(double value) {
    constexpr int kDefaultPrecision = 6;
    return FormatDouble(value, std::chars_format::general, kDefaultPrecision);
}

bool IsHexadecimal(wchar_t c) {
    return (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'f');
}

// A random UUID: version 4, variant 1.
bool IsFileUuid(std::wstring_view text) {
    constexpr std::wstring_view kForm = L"xxxxxxxx-xxxx-4xxx-Vxxx-xxxxxxxxxxxx";
    constexpr std::wstring_view kVariants = L"89ab";
    return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(),
                      [&](wchar_t c, wchar_t form) {
                          if (form == L'x') return IsHexadecimal(c);
                          if (form == L'V') return kVariants.find(c) != std::wstring_view::npos;
                          return c == form;
                      });
}

bool IsApplication(std::wstring_view text) {
    if (!text.starts_with(kApplication) || !text.ends_with(L'"')) return false;
    const std::wstring_view version =
        text.substr(kApplication.size(), text.size() - kApplication.size() - 1);
    return !version.empty() && version.find_first_not_of(L"0123456789.") == version.npos;
}

// The lines of a channel file after the common ones.
std::wstring ChannelLines(const OutputInSet& output) {
    std::wstring frequency = output.header.Value(L"-SamplingFrequency");
    if (output.name.group == ChannelGroup::kUltrasonic) {
        frequency = DefaultNotation(kUltrasonicFrequency);
    } else if (output.name.group != ChannelGroup::kAD) {
        frequency = DefaultNotation(kImuFrequency);
    }
    constexpr int kBitVoltsDigits = 24;
    return HeaderLine(L"-ProbeName", L"Unknown") +
           HeaderLine(L"-ReferenceChannel", L"\"External Hardware Reference\"") +
           HeaderLine(L"-SamplingFrequency", frequency) +
           HeaderLine(L"-ADMaxValue", output.header.Value(L"-ADMaxValue")) +
           HeaderLine(L"-ADBitVolts",
                      FormatDouble(kChannelADBitVolts, std::chars_format::fixed, kBitVoltsDigits)) +
           HeaderLine(L"-NumADChannels", L"1") +
           HeaderLine(L"-ADChannel", std::to_wstring(output.name.channel)) +
           HeaderLine(L"-InputRange", DefaultNotation(kChannelInputRange));
}

std::wstring RawDataLines(const OutputInSet& output) {
    constexpr int kBitVoltsDigits = 6;
    return HeaderLine(L"-SamplingFrequency", output.header.Value(L"-SamplingFrequency")) +
           HeaderLine(L"-ADMaxValue", std::to_wstring(kRawADMaxValue)) +
           HeaderLine(L"-ADBitVolts", FormatDouble(kRawADBitVolts, std::chars_format::scientific,
                                                   kBitVoltsDigits)) +
           HeaderLine(L"-NumADChannels", output.header.Value(L"-NumADChannels"));
}

// Lines of a kind of file that are the same for every recording.
struct KindLines {
    VtxDataTypes::VtxDataType type;
    const wchar_t* version;
    std::size_t recordSize;
};

KindLines LinesOf(OutputName::Kind kind) {
    switch (kind) {
        case OutputName::Kind::kEvents:
            return {VtxDataTypes::kEvent, kEventFileVersion, sizeof(VtxDataTypes::EventRec)};
        case OutputName::Kind::kRawData:
            return {VtxDataTypes::kRaw, kRawDataFileVersion, 0};
        case OutputName::Kind::kChannel:
            break;
    }
    return {VtxDataTypes::kCSC, kChannelFileVersion, sizeof(VtxDataTypes::CRRec)};
}

// The expected text of the header; values that are checked separately are copied from it.
std::wstring PrescribedText(const OutputInSet& output) {
    const KindLines lines = LinesOf(output.name.kind);
    const auto own = [&](const wchar_t* key) { return HeaderLine(key, output.header.Value(key)); };
    std::wstring text =
        std::wstring(kHeaderTitle) + L"\r\n" +
        HeaderLine(L"-FileType", DataTypeName(static_cast<std::uint8_t>(lines.type))) +
        HeaderLine(L"-FileVersion", lines.version) + own(L"-FileUUID") + own(L"-SessionUUID") +
        own(L"-OriginalFileName") + own(L"-TimeCreated") + own(L"-TimeClosed") + L"\r\n" +
        HeaderLine(L"-RecordSize", std::to_wstring(lines.recordSize)) + own(L"-ApplicationName") +
        own(L"-AcquisitionSystem") + HeaderLine(L"-AcqEntName", output.name.entity);
    if (output.name.kind == OutputName::Kind::kChannel) text += ChannelLines(output);
    if (output.name.kind == OutputName::Kind::kRawData) text += RawDataLines(output);
    return text;
}

// Reports what is wrong with the header of a file, with the position of the line.
class HeaderFindings {
  public:
    HeaderFindings(const OutputInSet& output, FindingLog& log)
        : output_(output), bytes_(ToUtf8(output.header.Text())), log_(log) {}

    void Add(const std::wstring& key, const std::wstring& text) {
        const auto line = bytes_.find("\r\n" + ToUtf8(key) + " ");
        FindingPlace place;
        if (line != std::string::npos) place.byte = line + 2;
        log_.Add(place, text);
    }

    void AddWithoutPlace(const std::wstring& text) { log_.Add({}, text); }

    // The value of `key` has the wrong form.
    void AddForm(const std::wstring& key, const std::wstring& form) {
        Add(key,
            L"its " + key + L" is \"" + OneLine(output_.header.Value(key)) + L"\", not " + form);
    }

    void CompareText() {
        const std::string wanted = ToUtf8(PrescribedText(output_));
        if (bytes_ == wanted) return;
        const auto differing =
            std::mismatch(bytes_.begin(), bytes_.end(), wanted.begin(), wanted.end());
        const auto byte = static_cast<std::size_t>(differing.first - bytes_.begin());
        log_.Add({std::nullopt, byte}, L"its header has \"" + LineAt(bytes_, byte) +
                                           L"\" where \"" + LineAt(wanted, byte) +
                                           L"\" is prescribed");
    }

  private:
    static std::wstring LineAt(const std::string& text, std::size_t byte) {
        if (byte >= text.size()) return {};
        const auto end = std::min(text.find('\n', byte), text.size() - 1);
        const auto before = byte == 0 ? std::string::npos : text.rfind('\n', byte - 1);
        const auto start = before == std::string::npos ? 0 : before + 1;
        const std::wstring line = FromUtf8(std::string_view(text).substr(start, end + 1 - start));
        return OneLine(line.ends_with(L"\r\n") ? line.substr(0, line.size() - 2) : line);
    }

    const OutputInSet& output_;
    std::string bytes_;
    FindingLog& log_;
};

struct OriginalName {
    std::wstring directory;
    std::wstring fileName;
};

// From the header: where the file was created, and under which name. None if the text has no quotes
// or no directory.
std::optional<OriginalName> ReadOriginalName(const OutputInSet& output) {
    const std::wstring text = output.header.Value(L"-OriginalFileName");
    const auto mark = text.find_last_of(L"/\\");
    if (text.size() < 2 || !text.starts_with(L'"') || !text.ends_with(L'"') ||
        mark == std::wstring::npos) {
        return std::nullopt;
    }
    return OriginalName{text.substr(1, mark), text.substr(mark + 1, text.size() - mark - 2)};
}

void CheckOriginalName(const OutputInSet& output, HeaderFindings& findings) {
    const auto original = ReadOriginalName(output);
    if (!original) return findings.AddForm(L"-OriginalFileName", L"a path in quotes");
    if (original->fileName == output.fileName) return;
    findings.Add(L"-OriginalFileName",
                 L"its -OriginalFileName says that it is " + OneLine(original->fileName));
}

void CheckTimes(const OutputInSet& output, HeaderFindings& findings) {
    constexpr const wchar_t* kTimeForm = L"YYYY/MM/DD HH:MM:SS";
    if (!ReadHeaderTime(output.header.Value(L"-TimeCreated"))) {
        findings.AddForm(L"-TimeCreated", kTimeForm);
    }
    const std::wstring closed = output.header.Value(L"-TimeClosed");
    if (output.name.kind == OutputName::Kind::kEvents) {
        if (closed != kNotClosed) findings.AddForm(L"-TimeClosed", kNotClosed);
    } else if (closed == kNotClosed) {
        findings.AddWithoutPlace(
            L"it was not closed, its end may be missing; convert the recording again, unless a "
            L"conversion is still writing it");
    } else if (!ReadHeaderTime(closed)) {
        findings.AddForm(L"-TimeClosed", kTimeForm);
    }
}

void CheckForms(const OutputInSet& output, HeaderFindings& findings) {
    findings.CompareText();
    if (!IsFileUuid(output.header.Value(L"-FileUUID"))) {
        findings.AddForm(L"-FileUUID", L"a random UUID");
    }
    CheckOriginalName(output, findings);
    CheckTimes(output, findings);
    if (!IsApplication(output.header.Value(L"-ApplicationName"))) {
        findings.AddForm(L"-ApplicationName", L"this program and a version");
    }
    if (!output.header.Value(L"-AcquisitionSystem").starts_with(kSystemPrefix)) {
        findings.AddForm(L"-AcquisitionSystem", L"Unknown and a name");
    }
}

struct SharedValue {
    std::wstring key;
    std::wstring what;  // files with the same key have the same value
    std::wstring value;
};

// The values that are the same in all files of a set, or in all of a kind.
std::vector<SharedValue> SharedValues(const OutputInSet& output) {
    std::vector<SharedValue> values;
    const auto add = [&](const wchar_t* key) {
        values.push_back({key, key, output.header.Value(key)});
    };
    add(L"-SessionUUID");
    add(L"-AcquisitionSystem");
    add(L"-ApplicationName");
    if (const auto original = ReadOriginalName(output)) {
        values.push_back({L"-OriginalFileName", L"directory", original->directory});
    }
    const bool isChannel = output.name.kind == OutputName::Kind::kChannel;
    if (isChannel) add(L"-ADMaxValue");
    const bool isRawData = output.name.kind == OutputName::Kind::kRawData;
    if (isRawData || output.name.IsChannelOf(ChannelGroup::kAD)) add(L"-SamplingFrequency");
    if (isRawData) add(L"-NumADChannels");
    return values;
}

using UsualValues = std::map<std::wstring, std::wstring>;  // by SharedValue::what

// The most frequent value; of equally frequent ones, the one that reached this number first.
UsualValues FindUsualValues(const std::vector<OutputInSet>& outputs) {
    std::map<std::wstring, std::map<std::wstring, std::size_t>> counts;
    UsualValues usual;
    for (const OutputInSet& output : outputs) {
        if (!output.HasHeader()) continue;
        for (const SharedValue& shared : SharedValues(output)) {
            auto& ofKey = counts[shared.what];
            const std::size_t count = ++ofKey[shared.value];
            const auto best = usual.try_emplace(shared.what, shared.value).first;
            if (count > ofKey[best->second]) best->second = shared.value;
        }
    }
    return usual;
}

void TakeRecordedValues(const RecordingHeader& recording, UsualValues& usual) {
    usual[L"-SessionUUID"] = recording.sessionUuid;
    usual[L"-AcquisitionSystem"] = std::wstring(kSystemPrefix) + recording.acquisitionSystem;
    usual[L"-ADMaxValue"] = std::to_wstring(recording.adMaxValue);
    usual[L"-SamplingFrequency"] = DefaultNotation(recording.samplingFrequency);
    usual[L"-NumADChannels"] = std::to_wstring(recording.numADChannels);
}

}  // namespace

void CheckHeaders(const std::vector<OutputInSet>& outputs, const RecordingHeader* recording,
                  std::size_t mostFindingsPerFile, VerifiedSet& set) {
    UsualValues usual = FindUsualValues(outputs);
    if (recording != nullptr) TakeRecordedValues(*recording, usual);
    for (const OutputInSet& output : outputs) {
        if (!output.HasHeader()) continue;
        FindingLog log(set, output.path, mostFindingsPerFile);
        HeaderFindings findings(output, log);
        CheckForms(output, findings);
        for (const SharedValue& shared : SharedValues(output)) {
            if (shared.value == usual[shared.what]) continue;
            const std::wstring owner =
                recording == nullptr ? L"that of other files of its set \"" : L"it should be \"";
            findings.Add(shared.key, L"its " + shared.key + L" has \"" + OneLine(shared.value) +
                                         L"\", " + owner + OneLine(usual[shared.what]) + L'"');
        }
    }
}

}  // namespace stalwick
