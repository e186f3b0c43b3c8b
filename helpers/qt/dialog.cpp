#include "helpers/qt/dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

using namespace std::chrono_literals;

namespace {

// Whether the key moves the focus to the button or presses it.
bool IsForButton(int key) {
  return key == Qt::Key_Tab || key == Qt::Key_Backtab || key == Qt::Key_Shift ||
         key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter;
}

}  // namespace

Dialog::Dialog(Gathering& from, bool isRemote)
    : gathering(from),
      text(new QLabel(this)),
      bar(new QProgressBar(this)),
      button(new QPushButton(tr("Cancel"), this)),
      events(
          from, [this](int key) { ShowState(key); }, [this] { reject(); }) {
  setWindowTitle(tr("A program needs random bytes"));
  QString request = tr(
      "Move the mouse around in this window, or press different keys at irregular intervals, until "
      "the bar is full. To cancel, press Escape or close the window.");
  if (isRemote) {
    request +=
        "\n\n" + tr("You may be connected over a network, so twice as many keys are needed.");
  }
  AddParts();
  Say(request);
  text->setMinimumHeight(text->heightForWidth(text->minimumWidth()));  // later texts are shorter
  connect(&silence, &QTimer::timeout, this, &QDialog::accept);
}

void Dialog::AddParts() {
  text->setWordWrap(true);
  text->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  text->setMinimumWidth(fontMetrics().averageCharWidth() * 60);
  bar->setAccessibleName(tr("Progress"));
  bar->setValue(0);  // without a value, the bar shows no text
  bar->setFormat(tr("%p%"));
  // A user who types must not press the button by accident, so the bar, which comes first, takes the focus.
  bar->setFocusPolicy(Qt::StrongFocus);
  button->setAutoDefault(false);
  for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
    new QShortcut(
        key, button, [this] { reject(); }, Qt::WidgetShortcut);
  }

  auto* const buttons = new QDialogButtonBox(this);
  buttons->addButton(button, QDialogButtonBox::RejectRole);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(text);
  layout->addSpacing(fontMetrics().height() * 6);  // room for the mouse
  layout->addStretch();
  layout->addWidget(bar);
  layout->addWidget(buttons);
}

void Dialog::Say(const QString& sentence) {
  text->setText(sentence);
  bar->setAccessibleDescription(sentence);  // the bar has the focus, so a screen reader reads it
}

void Dialog::ShowState(int key) {
  if (key != 0 && !IsForButton(key)) bar->setFocus();
  if (gathering.HasAlarm()) return ShowAlarm();
  bar->setValue(gathering.Percent());
  if (gathering.IsComplete()) ShowEnough(key);
}

// Takes keys until half a second without one, for three seconds at most: a user who is still typing must not
// type into another window.
void Dialog::ShowEnough(int key) {
  if (!sinceEnough.isValid()) {
    sinceEnough.start();
    Say(tr("That is enough. Please stop typing."));
    button->setEnabled(false);
    silence.start(500ms);
  } else if (key != 0 && sinceEnough.elapsed() < 2500) {
    silence.start(500ms);
  }
}

void Dialog::ShowAlarm() {
  setWindowTitle(tr("No random bytes"));
  Say(tr("The input is too regular to be random. No random bytes were generated."));
  bar->setValue(0);
  button->setText(tr("Close"));
}
