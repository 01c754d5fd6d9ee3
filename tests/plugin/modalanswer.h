#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QAbstractButton>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <functional>

/// Reaches a window that appears while a modal loop runs, as a person would:
/// a timer looks among the visible top-level widgets for the first that
/// `match` accepts and hands it to `act`, once. Gives up after `timeoutMs`.
inline void whenWindowAppears(std::function<bool(QWidget*)> match, std::function<void(QWidget*)> act,
                              int timeoutMs = 60000)
{
    auto* timer = new QTimer(qApp);
    auto elapsed = std::make_shared<int>(0);
    QObject::connect(timer, &QTimer::timeout, timer, [=] {
        *elapsed += timer->interval();
        for (QWidget* w : QApplication::topLevelWidgets())
            if (w->isVisible() && match(w)) {
                timer->deleteLater();
                timer->stop();
                act(w);
                return;
            }
        if (*elapsed > timeoutMs) {
            timer->stop();
            timer->deleteLater();
        }
    });
    timer->start(50);
}

/// Answers the next message box by clicking `button`; its text goes to `text`.
inline void answerMessageBox(QMessageBox::StandardButton button, QString* text = nullptr)
{
    whenWindowAppears([](QWidget* w) { return qobject_cast<QMessageBox*>(w) != nullptr; },
                      [button, text](QWidget* w) {
                          auto* box = qobject_cast<QMessageBox*>(w);
                          if (text)
                              *text = box->text();
                          QTest::mouseClick(box->button(button), Qt::LeftButton);
                      });
}

/// Whether a widget is the calibrator's window (its class lives in the plug-in).
inline bool isToolDialog(QWidget* w)
{
    return qstrcmp(w->metaObject()->className(), "ColorCorrectionToolDlg") == 0;
}
