// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include <QApplication>

namespace stalwick {

// The application object; there is only one. Its names match the desktop's files.
class StalwickApp : public QApplication {
    Q_OBJECT
  public:
    // Keeps references to both arguments, like QApplication.
    StalwickApp(int& argumentCount, char** arguments);

    // Runs the main dialog until it is closed, with the recordings among the arguments in its list;
    // returns the program's exit status. The arguments are those after the program's name, narrow.
    int InitInstance(const std::vector<std::string>& arguments = {});
};

}  // namespace stalwick
