#pragma once

#include <string>
#include <vector>

class QString;
class QWidget;

namespace stalwick {

// Asks for recordings; their full paths in the dialog's order, none when the user canceled.
std::vector<std::wstring> AskForInputFiles(QWidget* owner, const QString& startDirectory);

// Asks for a directory; empty when the user canceled.
std::wstring AskForOutputDirectory(QWidget* owner, const QString& startDirectory);

}  // namespace stalwick
