// rng-gather-qt: gathers entropy from what a user does in a dialog, for the kind "bioqt".

#include "helpers/qt/dialog.h"
#include "helpers/session/remote_display.h"
#include "helpers/session/run_helper.h"

#include <QApplication>
#include <QLocale>
#include <QTranslator>

namespace {

// Without a display, Qt would abort and leave a core dump, though nothing is wrong.
void EndQuietly(QtMsgType type, const QMessageLogContext&, const QString&) {
  if (type == QtFatalMsg) Session::Exit(1);
}

void PrepareQt() {
  ::qputenv("QT_QPA_PLATFORM", "xcb");
  // Without an address, Qt would start a message bus, which would keep running.
  if (!::qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) {
    ::qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + ::qgetenv("XDG_RUNTIME_DIR") + "/bus");
  }
  ::qInstallMessageHandler(EndQuietly);
}

void Draw(const Session& session) {
  session.ExitAtEnd();
  PrepareQt();
  int count = 1;
  char name[] = "rng-gather-qt";
  char* arguments[] = {name, nullptr};
  QApplication application(count, arguments);
  // Compressed events lose their times. Qt sets the attribute when it connects to the display, so this comes later.
  QApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
  QTranslator translator;
  if (translator.load(QLocale(), "rng-gather-qt", "_", ":/")) {
    QApplication::installTranslator(&translator);
  }

  const bool isRemote = IsDisplayRemote();
  Gathering gathering(DrawSystemBytes(), isRemote);
  Dialog dialog(gathering, isRemote);
  if (dialog.exec() == QDialog::Accepted) session.Answer(gathering.Finish());
}

}  // namespace

int main() {
  return RunHelper("rng-gather-qt", [] { AnswerPlugin(Draw); });
}
