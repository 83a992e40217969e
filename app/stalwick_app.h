#pragma once

#include <QApplication>

namespace stalwick {

// The application object; there is one. Its names are those of the desktop's files.
class StalwickApp : public QApplication {
    Q_OBJECT
  public:
    // Keeps references to both arguments, like QApplication.
    StalwickApp(int& argumentCount, char** arguments);

    // Runs the main dialog until it is closed; returns the program's exit status.
    int InitInstance();
};

}  // namespace stalwick
