// SPDX-License-Identifier: BSD-3-Clause
#pragma once

class QAction;
class QCheckBox;
class QDialog;
class QLabel;
class QLineEdit;
class QPalette;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;

namespace stalwick {

// The controls of the main dialog; the dialog owns them.
struct MainControls {
    QAction* about = nullptr;
    QLineEdit* inputDirectory = nullptr;
    QPushButton* selectInputFiles = nullptr;
    QLineEdit* outputDirectory = nullptr;
    QPushButton* selectOutputDirectory = nullptr;
    QTreeWidget* fileList = nullptr;
    QPushButton* clearList = nullptr;
    QPlainTextEdit* fileHeader = nullptr;
    QCheckBox* cscOutput = nullptr;
    QCheckBox* baseImu = nullptr;
    QCheckBox* afeImu = nullptr;
    QCheckBox* ultrasonic = nullptr;
    QCheckBox* rawDataFileOutput = nullptr;
    QPushButton* createNewFiles = nullptr;
    QLabel* legalNotice = nullptr;
};

// Creates the controls and lays them out in `dialog`. Tab order is reading order.
MainControls MakeMainControls(QDialog& dialog);

// Gives the read-only boxes the dialog's own background. Call it again for each palette.
void LookReadOnly(const MainControls& controls, const QPalette& palette);

}  // namespace stalwick
