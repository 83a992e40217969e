// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

class QString;
class QWidget;

namespace stalwick {

// Asks for recordings; returns their full paths in the dialog's order, or none if the user
// canceled.
std::vector<std::wstring> AskForInputFiles(QWidget* owner, const QString& startDirectory);

// Asks for a directory; returns an empty text if the user canceled.
std::wstring AskForOutputDirectory(QWidget* owner, const QString& startDirectory);

}  // namespace stalwick
