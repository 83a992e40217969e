// SPDX-License-Identifier: BSD-3-Clause
#include "app/about_dlg.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

#include "app/app_identity.h"
#include "app/control_ids.h"
#include "platform/program_version.h"

namespace stalwick {

namespace {

constexpr int kPictureSize = 96;
constexpr int kTextColumns = 60;  // the legal notice takes two lines
constexpr int kGap = 18;

QLabel* MakeLabel(const QString& text, ControlId id) {
    auto* label = Identify(new QLabel(text), id);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QLabel* MakePicture(qreal devicePixelRatio) {
    auto* picture = Identify(new QLabel, ControlId::kAboutPicture, QStringLiteral("Program icon"));
    picture->setPixmap(
        ApplicationIcon().pixmap(QSize(kPictureSize, kPictureSize), devicePixelRatio));
    return picture;
}

QLabel* MakeName() {
    auto* name = MakeLabel(ApplicationName(), ControlId::kAboutName);
    QFont font = name->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.5);
    name->setFont(font);
    return name;
}

QLabel* MakeLegalNotice() {
    auto* notice = MakeLabel(LegalNotice(), ControlId::kAboutLegalNotice);
    notice->setWordWrap(true);
    notice->setFixedWidth(notice->fontMetrics().averageCharWidth() * kTextColumns);
    return notice;
}

QVBoxLayout* MakeTexts() {
    auto* texts = new QVBoxLayout;
    texts->addWidget(MakeName());
    texts->addWidget(MakeLabel(QStringLiteral("Version: %1.%2.%3 64-bit")
                                   .arg(kVersionMajor)
                                   .arg(kVersionMinor)
                                   .arg(kVersionPatch),
                               ControlId::kAboutVersion));
    texts->addWidget(
        MakeLabel(QStringLiteral("Build number: %1").arg(kBuildNumber), ControlId::kAboutBuild));
    texts->addSpacing(kGap / 2);
    texts->addWidget(MakeLegalNotice());
    texts->addStretch();
    return texts;
}

}  // namespace

CAboutDlg::CAboutDlg(QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("About Stalwick"));

    auto* ok =
        Identify(new QPushButton(QStringLiteral("&OK")), ControlId::kOk, QStringLiteral("OK"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);

    auto* upper = new QHBoxLayout;
    upper->addWidget(MakePicture(devicePixelRatioF()), 0, Qt::AlignTop);
    upper->addSpacing(kGap);
    upper->addLayout(MakeTexts());

    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(kGap, kGap, kGap, kGap);
    all->addLayout(upper);
    all->addWidget(ok, 0, Qt::AlignRight);
    all->setSizeConstraint(QLayout::SetFixedSize);
    ok->setFocus();
}

}  // namespace stalwick
