// SPDX-License-Identifier: MIT
// Modal warnings with an "Ok" button, through a presenter that tests and headless runs replace.
#pragma once

#include <QString>

#include <functional>

class QWidget;

using WarningPresenter =
    std::function<void(QWidget* parent, const QString& title, const QString& text)>;

// Shows a warning box titled `title`. On Qt's offscreen platform nobody could press "Ok", so
// the default presenter writes the warning to standard error instead.
void showWarning(QWidget* parent, const QString& title, const QString& text);

// The same for an information box; it goes through the same presenter.
void showInformation(QWidget* parent, const QString& title, const QString& text);

// Replaces the presenter; an empty function restores the default. Returns the previous one.
WarningPresenter setWarningPresenter(WarningPresenter presenter);
