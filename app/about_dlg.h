// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QDialog>

namespace stalwick {

// "About Stalwick": the icon, the program's name, version and build, and the legal notice.
class CAboutDlg : public QDialog {
    Q_OBJECT
  public:
    explicit CAboutDlg(QWidget* parent = nullptr);
};

}  // namespace stalwick
