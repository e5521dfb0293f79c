#include "app/desktop/print/PrintPreview.h"

#include <QBuffer>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPushButton>
#include <QVBoxLayout>
#include <optional>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/text/Translate.h"
#include "platform/EventLoop.h"
#include "platform/FileSystem.h"
#include "text/Composed.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr Duration kWriteLimit = std::chrono::seconds(30);
constexpr int kPdfResolution = 300;
constexpr double kMargin = 5;  // mm; the document leaves two centimetres of its own
constexpr int kFontPoints = 9;

void SetPages(QPagedPaintDevice& device) {
  device.setPageSize(QPageSize(QPageSize::A4));
  device.setPageMargins(QMarginsF(kMargin, kMargin, kMargin, kMargin), QPageLayout::Millimeter);
}

}  // namespace

std::unique_ptr<QTextDocument> MakeDocument(const PrintedReport& report) {
  auto document = std::make_unique<QTextDocument>();
  QFont font;
  font.setPointSize(kFontPoints);
  document->setDefaultFont(font);
  document->setDefaultStyleSheet(
      "body { color: black; background: white } h1 { font-size: 16pt } h2 { font-size: 12pt } "
      "h3 { font-size: 10pt } table { border-collapse: collapse }");
  document->setHtml("<html><body>" + QString::fromStdString(report.html) + "</body></html>");
  document->setMetaInformation(QTextDocument::DocumentTitle, QString::fromStdString(report.title));
  return document;
}

QByteArray MakePdf(const PrintedReport& report) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  {
    QPdfWriter writer(&buffer);
    writer.setResolution(kPdfResolution);
    writer.setTitle(QString::fromStdString(report.title));
    writer.setCreator("ZEB " ZEB_VERSION);
    SetPages(writer);
    MakeDocument(report)->print(&writer);
  }
  return bytes;
}

void OpenPrintDialog(QWidget* parent, const PrintedReport& report) {
  const auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
  printer->setDocName(QString::fromStdString(report.title));
  auto* dialog = new QPrintDialog(printer.get(), parent);
  dialog->setObjectName("Print");
  dialog->setWindowTitle(T("Print"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  // The printer outlives the dialog, which looks at it to its end.
  QObject::connect(dialog, &QObject::destroyed, [printer] {});
  QObject::connect(dialog, &QDialog::accepted,
                   [printer, report] { MakeDocument(report)->print(printer.get()); });
  dialog->open();
}

PrintPreview::PrintPreview(Desk& desk, PrintedReport report)
    : DialogFrame(desk.frame, "PrintPreview", Translatable("Print Preview")),
      desk_(desk),
      report_(std::move(report)),
      document_(MakeDocument(report_)),
      printer_(std::make_unique<QPrinter>(QPrinter::HighResolution)),
      pages_(new QPrintPreviewWidget(printer_.get(), this)) {
  SetPages(*printer_);
  pages_->setObjectName("Pages");
  pages_->setAccessibleName(T("Pages as they will be printed"));
  QObject::connect(pages_, &QPrintPreviewWidget::paintRequested, this,
                   [this](QPrinter* printer) { document_->print(printer); });
  Contents()->addWidget(pages_, 1);
  AddButton("ZoomIn", Translatable("Zoom &in"), [this] { pages_->zoomIn(); });
  AddButton("ZoomOut", Translatable("Zoom &out"), [this] { pages_->zoomOut(); });
  AddButton("SavePdf", Translatable("&Save as PDF…"), [this] {
    OpenFileQuestion(this,
                     {.title = std::string(Translatable("Save as PDF")),
                      .filters = {std::string(Translatable("PDF files (*.pdf)"))},
                      .folder = {},
                      .name = CleanForFileName(report_.title) + ".pdf",
                      .toWrite = true,
                      .suffix = "pdf"},
                     [this](const std::string& path) { SavePdf(path); });
  });
  AddButton("Print", Translatable("&Print…"), [this] { OpenPrintDialog(this, report_); })->setDefault(true);
  AddButton("Close", Translatable("&Close"), [this] { reject(); });
  const QFontMetrics metrics(font());
  resize(metrics.averageCharWidth() * 100, metrics.height() * 40);
}

PrintPreview::~PrintPreview() {
  delete pages_;  // before the printer that it shows
}

// The dialog may be closed while the file is written.
void PrintPreview::SavePdf(const std::string& path) {
  const QByteArray pdf = MakePdf(report_);
  desk_.environment.loop.Start("save as PDF", [&desk = desk_, path, bytes = pdf.toStdString()] {
    EventLoop& loop = desk.environment.loop;
    const std::optional<Outcome> written = loop.RunBlocking(
        [&files = desk.environment.files, path, bytes]() -> Outcome {
          const auto target = files.FindTarget(path, {});
          return target ? target.Value()->Replace(bytes) : Outcome(target);
        },
        kWriteLimit);
    if (written && *written) return;
    const std::string why = written ? written->Reason() : "'" + path + "' could not be written in time";
    loop.Post([&desk, why] {
      desk.boxes.Show(desk.frame, MessageIcon::kExclamation,
                      Composed("The report could not be saved.\n%1", {why}));
    });
  });
}

}  // namespace zeb
