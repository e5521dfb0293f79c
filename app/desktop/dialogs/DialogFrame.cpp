#include "app/desktop/dialogs/DialogFrame.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStringList>
#include <QVBoxLayout>
#include <utility>

#include "app/desktop/text/Translate.h"

namespace zeb {

DialogFrame::DialogFrame(QWidget* parent, const char* name, std::string_view title) : QDialog(parent) {
  setObjectName(QLatin1String(name));
  setWindowTitle(T(title));
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowModality(parent != nullptr ? Qt::WindowModal : Qt::NonModal);
  auto* layout = new QVBoxLayout(this);
  contents_ = new QVBoxLayout;
  layout->addLayout(contents_, 1);
  buttons_ = new QHBoxLayout;
  buttons_->addStretch(1);
  layout->addLayout(buttons_);
}

QPushButton* DialogFrame::AddButton(const char* name, std::string_view caption,
                                    std::function<void()> pressed) {
  auto* button = new QPushButton(T(caption), this);
  button->setObjectName(QLatin1String(name));
  button->setAutoDefault(false);
  QObject::connect(button, &QPushButton::clicked, this, [pressed = std::move(pressed)] { pressed(); });
  buttons_->addWidget(button);
  return button;
}

QPushButton* DialogFrame::AddCancel() {
  return AddButton("Cancel", "Cancel", [this] { reject(); });
}

QLabel* DialogFrame::Caption(QWidget* field, const char* name, std::string_view caption) {
  field->setObjectName(QLatin1String(name));
  auto* label = new QLabel(T(caption), this);
  label->setBuddy(field);
  field->setAccessibleName(label->text().remove('&').remove(':'));
  return label;
}

void OpenFileQuestion(QWidget* parent, const FileQuestion& question,
                      std::function<void(const std::string& path)> chosen) {
  auto* dialog = new QFileDialog(parent, T(question.title));
  dialog->setObjectName("FileQuestion");
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setAcceptMode(question.toWrite ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog->setFileMode(question.toWrite ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  QStringList filters;
  for (const std::string& filter : question.filters) filters << T(filter);
  dialog->setNameFilters(filters);
  dialog->setDefaultSuffix(QString::fromStdString(question.suffix));
  if (!question.folder.empty()) dialog->setDirectory(QString::fromStdString(question.folder));
  if (!question.name.empty()) dialog->selectFile(QString::fromStdString(question.name));
  QObject::connect(dialog, &QFileDialog::fileSelected, dialog,
                   [chosen = std::move(chosen)](const QString& path) { chosen(path.toStdString()); });
  dialog->open();
}

}  // namespace zeb
