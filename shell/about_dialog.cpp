// SPDX-License-Identifier: MIT
// The "About" dialog: software and library versions and the outcome of the version check.
#include "shell/about_dialog.h"

#include "krt/krt_api.h"
#include "shell/version_checker.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

const char* const kMakerName = "Tarnwick Instruments";

QLabel* makeHeading() {
  auto* heading = new QLabel("KRT40 Software");
  QFont font = heading->font();
  font.setPointSizeF(font.pointSizeF() * 1.5);
  font.setBold(true);
  heading->setFont(font);
  return heading;
}

QHBoxLayout* makeVersionRow(const QString& name, QLabel* value) {
  auto* row = new QHBoxLayout;
  row->addWidget(new QLabel(name));
  row->addStretch();
  row->addWidget(value);
  return row;
}

QLabel* makeDownloadLink() {
  auto* link = new QLabel(QStringLiteral("<a href=\"%1\">Download The Latest Version</a>")
                              .arg(QStringLiteral(KRT40_DOWNLOAD_URL)));
  link->setTextFormat(Qt::RichText);
  link->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard |
                                Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  link->setOpenExternalLinks(true);
  return link;
}

}  // namespace

AboutDialog::AboutDialog(VersionChecker& checker, QWidget* parent) : QDialog(parent) {
  setWindowTitle("About the KRT40 Software");
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(makeHeading());
  layout->addWidget(new QLabel(kMakerName));
  softwareVersionText = new QLabel(softwareVersion());
  layout->addLayout(makeVersionRow("Software Version", softwareVersionText));
  apiVersionText = new QLabel(QString::fromLatin1(krtGetAPIVersion()));
  layout->addLayout(makeVersionRow("KRT40 API Version", apiVersionText));
  addStatus(checker, layout);
  auto* close = new QPushButton("OK");
  connect(close, &QPushButton::clicked, this, &QDialog::accept);
  layout->addWidget(close);
}

void AboutDialog::addStatus(VersionChecker& checker, QVBoxLayout* layout) {
  status = new QLabel;
  layout->addWidget(status);
  // connectionFailed() does not wait: while the fetch runs it is false, and the second test
  // waits for the outcome.
  if (checker.connectionFailed()) {
    status->setText(QStringLiteral("No internet connection. Check for software update\nat %1")
                        .arg(QStringLiteral(KRT40_WEBSITE_URL)));
    status->setStyleSheet("QLabel { color: #994400; }");
  } else if (checker.isNewVersionAvailable()) {
    status->setText("Software Out Of Date");
    status->setStyleSheet("QLabel { color: red; }");
    download = makeDownloadLink();
    layout->addWidget(download);
  } else {
    status->setText("Software Up To Date");
    status->setStyleSheet("QLabel { color: green; }");
  }
}
