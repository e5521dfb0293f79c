#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/CartChooser.h"
#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/text/Translate.h"
#include "dialogs/frmManualZEB.h"

namespace zeb {
namespace {

// What is typed as it was stored while nobody has changed it: a line of the screen cannot hold every text.
std::string TextOf(const QLineEdit& field, const std::string& opened) {
  return field.isModified() ? field.text().toStdString() : opened;
}

// frmManualZEB.
class ManualDialog : public QDialog {
 public:
  ManualDialog(Desk& desk, ServicePtr window)
      : QDialog(desk.frame),
        desk_(desk),
        window_(std::move(window)),
        opened_(OpenManualEntry(window_->service())),
        cart_(new CartChooser(desk)) {
    setObjectName("ManualEntry");
    setWindowTitle(T("Update ZEB"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(Fields());
    layout->addWidget(Buttons());
    resize(70 * fontMetrics().averageCharWidth(), sizeHint().height());
    itemName_->setFocus();
  }

 private:
  QFormLayout* Fields() {
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    slot_ = List(form, "Slot", "&Set:", kManualSlotTexts);
    type_ = List(form, "ItemType", "T&ype:", kManualTypeTexts);
    itemName_ = Line(form, "ItemName", "&Title:");
    artist_ = Line(form, "Artist", "&Artist:");
    AddCart(form);
    notes_ = new QPlainTextEdit;
    notes_->setTabChangesFocus(true);
    notes_->setMinimumHeight(3 * fontMetrics().lineSpacing());
    Add(form, "Notes", "N&otes:", notes_);
    presenterReference_ = Line(form, "PresenterReference", "&Presenter reference:");
    presenterName_ = Line(form, "PresenterFullName", "Presenter's &full name:");
    showReference_ = Line(form, "ShowReference", "S&how reference:");
    showTitle_ = Line(form, "ShowTitle", "Show t&itle:");
    presenterReference_->setText(QString::fromStdString(opened_.presenterReference));
    presenterName_->setText(QString::fromStdString(opened_.presenterFullName));
    showReference_->setText(QString::fromStdString(opened_.showReference));
    showTitle_->setText(QString::fromStdString(opened_.showTitle));
    return form;
  }

  static void Add(QFormLayout* form, const char* name, std::string_view caption, QWidget* field,
                  QWidget* row = nullptr) {
    field->setObjectName(name);
    field->setAccessibleName(T(caption).remove('&').remove(':'));
    auto* label = new QLabel(T(caption));
    label->setBuddy(field);
    form->addRow(label, row != nullptr ? row : field);
  }

  static QLineEdit* Line(QFormLayout* form, const char* name, std::string_view caption) {
    auto* line = new QLineEdit;
    Add(form, name, caption, line);
    return line;
  }

  template <std::size_t count>
  static QComboBox* List(QFormLayout* form, const char* name, std::string_view caption,
                         const std::array<std::string_view, count>& texts) {
    auto* list = new QComboBox;
    for (const std::string_view text : texts) list->addItem(T(text));
    Add(form, name, caption, list);
    return list;
  }

  void AddCart(QFormLayout* form) {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* copy = Button("&Copy Cart");
    copy->setObjectName("CopyCart");
    connect(copy, &QPushButton::clicked, this, [this] { CopyFromCart(); });
    layout->addWidget(cart_);
    layout->addWidget(copy);
    Add(form, "CartNumber", "Cart &number:", cart_->Input(), row);
  }

  static QPushButton* Button(std::string_view caption) {
    auto* button = new QPushButton(T(caption));
    button->setAutoDefault(false);
    return button;
  }

  QWidget* Buttons() {
    auto* buttons = new QDialogButtonBox;
    QPushButton* update = Button("&Update");
    update->setObjectName("Update");
    update->setDefault(true);  // OK sends nothing
    QPushButton* ok = Button("OK");
    QPushButton* cancel = Button("Cancel");
    buttons->addButton(update, QDialogButtonBox::ActionRole);
    buttons->addButton(ok, QDialogButtonBox::AcceptRole);
    buttons->addButton(cancel, QDialogButtonBox::RejectRole);
    connect(update, &QPushButton::clicked, this, [this] { Send(); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    return buttons;
  }

  ManualEntry Entered() const {
    ManualEntry entry;
    entry.slot = static_cast<ManualSlot>(slot_->currentIndex());
    entry.itemType = kManualItemTypes[static_cast<std::size_t>(type_->currentIndex())];
    entry.itemName = itemName_->text().toStdString();
    entry.artist = artist_->text().toStdString();
    entry.cartNumber = cart_->Text();
    entry.notes = notes_->toPlainText().toStdString();
    entry.presenterReference = TextOf(*presenterReference_, opened_.presenterReference);
    entry.presenterFullName = TextOf(*presenterName_, opened_.presenterFullName);
    entry.showReference = TextOf(*showReference_, opened_.showReference);
    entry.showTitle = TextOf(*showTitle_, opened_.showTitle);
    return entry;
  }

  void CopyFromCart() {
    ManualEntry entry = Entered();
    if (!CopyCart(entry, desk_.environment.carts, window_->service().settings)) return;
    itemName_->setText(QString::fromStdString(entry.itemName));
    artist_->setText(QString::fromStdString(entry.artist));
    notes_->setPlainText(QString::fromStdString(entry.notes));
  }

  // What the service does not take (the same item, say) it does not take silently, as from the playout.
  void Send() {
    if (!window_->IsOpen())
      return desk_.boxes.Show(this, MessageIcon::kInformation, "This Service has been removed meanwhile");
    for (const std::string& message : ManualMessages(Entered())) window_->SetZEBInformation(message);
  }

  Desk& desk_;
  const ServicePtr window_;
  const ManualEntry opened_;
  CartChooser* cart_;
  QComboBox *slot_ = nullptr, *type_ = nullptr;
  QLineEdit *itemName_ = nullptr, *artist_ = nullptr;
  QLineEdit *presenterReference_ = nullptr, *presenterName_ = nullptr;
  QLineEdit *showReference_ = nullptr, *showTitle_ = nullptr;
  QPlainTextEdit* notes_ = nullptr;
};

}  // namespace

void OpenManualEntry(Desk& desk, const ServicePtr& window) {
  (new ManualDialog(desk, window))->open();
}

}  // namespace zeb
