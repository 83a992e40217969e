// SPDX-License-Identifier: BSD-3-Clause
#include "app/stalwick_app.h"

#include "app/app_identity.h"
#include "app/offered_files.h"
#include "app/stalwick_dlg.h"
#include "platform/program_version.h"

namespace stalwick {

StalwickApp::StalwickApp(int& argumentCount, char** arguments)
    : QApplication(argumentCount, arguments) {
    setApplicationName(QStringLiteral("stalwick"));
    setApplicationVersion(
        QStringLiteral("%1.%2.%3").arg(kVersionMajor).arg(kVersionMinor).arg(kVersionPatch));
    setDesktopFileName(QStringLiteral("com.veltrosyn.Stalwick"));
    setWindowIcon(ApplicationIcon());
}

int StalwickApp::InitInstance(const std::vector<std::string>& arguments) {
    StalwickDlg dialog;
    const auto recordings = RecordingsInArguments(arguments);
    if (!recordings.empty()) dialog.SelectFiles(recordings);
    dialog.exec();
    return 0;
}

}  // namespace stalwick
