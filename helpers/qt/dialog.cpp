#include "helpers/qt/dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

using namespace std::chrono_literals;

namespace {

// Moves the focus to the button, or presses it.
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
      events(from, [this](int key) { ShowState(key); }) {
  setWindowTitle(tr("Random bytes are needed"));
  QString request =
      tr("Move the mouse in this window, or type any keys without a rhythm, until the bar is "
         "full. Escape cancels.");
  if (isRemote) {
    request +=
        "\n\n" +
        tr("This display is reached over a network, so it takes twice as many keys as usual.");
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
  bar->setMaximum(Gathering::kNeededBits);
  bar->setValue(0);  // before the first value, there is no text
  bar->setFormat(tr("%p %"));
  // The keys of a user who types must not press the button: it has the focus only if the user moves it there.
  bar->setFocusPolicy(Qt::StrongFocus);
  bar->setFocus();
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
  bar->setValue(gathering.Bits());
  if (gathering.IsComplete()) ShowEnough(key);
}

// What is still being typed must not reach the window that was there before: until half a second of silence,
// three at most.
void Dialog::ShowEnough(int key) {
  if (!sinceEnough.isValid()) {
    sinceEnough.start();
    Say(tr("Enough, thank you. Please stop typing."));
    button->setEnabled(false);
    silence.start(500ms);
  } else if (key != 0 && sinceEnough.elapsed() < 2500) {
    silence.start(500ms);
  }
}

void Dialog::ShowAlarm() {
  setWindowTitle(tr("No random bytes"));
  Say(tr("The events are too much alike to be random. Nothing was drawn."));
  bar->setValue(0);
  button->setText(tr("Close"));
}
