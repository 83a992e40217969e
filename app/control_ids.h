// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>
#include <QWidget>

namespace stalwick {

// The controls of all dialogs. A control's object name is its number in decimal digits.
enum class ControlId {
    kOk = 1,

    kInputDirectory = 1000,
    kSelectInputFiles = 1001,
    kOutputDirectory = 1002,
    kSelectOutputDirectory = 1003,
    kCreateNewFiles = 1004,
    kCscOutput = 1005,
    kBaseImu = 1006,
    kAfeImu = 1007,
    kUltrasonic = 1008,
    kRawDataFileOutput = 1009,
    kClearList = 1010,
    kFileHeader = 1017,
    kLegalNotice = 1018,
    kFileList = 1019,

    kProgressTitle = 1021,
    kProgressBar = 1022,
    kCancel = 1023,
    kRecordLabel = 1024,

    kAboutPicture = 1025,
    kAboutName = 1026,
    kAboutBuild = 1027,
    kAboutLegalNotice = 1028,
    kAboutVersion = 1029
};

inline QString ObjectName(ControlId id) {
    return QString::number(static_cast<int>(id));
}

// Names a control: for other code by its number, for screen readers in words. A label gets no
// words, because screen readers would read them instead of its text.
template <typename Control>
Control* Identify(Control* control, ControlId id, const QString& accessibleName = {}) {
    control->setObjectName(ObjectName(id));
    control->setAccessibleName(accessibleName);
    return control;
}

}  // namespace stalwick
