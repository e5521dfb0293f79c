// PrintPreview: a report on pages as they would be printed; from here it is printed or saved as PDF.
#pragma once

#include <QTextDocument>
#include <memory>
#include <string>

#include "app/desktop/Desk.h"
#include "app/desktop/dialogs/DialogFrame.h"

class QPrintPreviewWidget;
class QPrinter;

namespace zeb {

// A report ready to be laid out.
struct PrintedReport {
  std::string title;  // what the print job and its file are called
  std::string html;
};

// As a document that prints black on white, whatever the windows' theme is.
std::unique_ptr<QTextDocument> MakeDocument(const PrintedReport& report);
// The pages as the bytes of a PDF file.
QByteArray MakePdf(const PrintedReport& report);
// The system's print dialog, then the pages.
void OpenPrintDialog(QWidget* parent, const PrintedReport& report);

class PrintPreview : public DialogFrame {
 public:
  PrintPreview(Desk& desk, PrintedReport report);
  ~PrintPreview() override;

 private:
  void SavePdf(const std::string& path);

  Desk& desk_;
  const PrintedReport report_;
  const std::unique_ptr<QTextDocument> document_;
  const std::unique_ptr<QPrinter> printer_;
  QPrintPreviewWidget* pages_;
};

}  // namespace zeb
