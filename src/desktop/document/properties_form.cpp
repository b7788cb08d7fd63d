#include "desktop/document/properties_form.h"

#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTabWidget>
#include <array>
#include <utility>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

using document::MessageProperties;

struct PropertyRow {
  const char* name;
  const char* label;
  const std::string MessageProperties::*text;
  bool is_theirs = false;  // what people wrote, where it is not the given text for nothing
};
constexpr auto kPropertyRows = std::to_array<PropertyRow>({
    {"LocationLabel", QT_TRANSLATE_NOOP("PropertiesForm", "Location:"), &MessageProperties::location, true},
    {"TitleLabel", QT_TRANSLATE_NOOP("PropertiesForm", "Title:"), &MessageProperties::title, true},
    {"DirectionLabel", QT_TRANSLATE_NOOP("PropertiesForm", "Direction:"), &MessageProperties::direction},
    {"LanguageLabel", QT_TRANSLATE_NOOP("PropertiesForm", "Language:"), &MessageProperties::language},
    {"CharSetLabel", QT_TRANSLATE_NOOP("PropertiesForm", "Character set:"), &MessageProperties::charset},
});

// They are given as they are; what is longer than the window is cut there, and the tip has it whole.
constexpr std::size_t kLongestShown = 1000;  // characters

template <typename Item>
std::vector<QString> Lines(const std::vector<Item>& items, const Sentence& more) {
  std::vector<QString> lines;
  lines.reserve(items.size() + 1);
  for (const auto& item : items) lines.push_back(InWords(Describe(item)));
  if (!more.empty()) lines.push_back(InWords(more));
  return lines;
}

}  // namespace

PropertiesForm::PropertiesForm(document::MessageDocument document, std::filesystem::path file, bool has_text_part,
                               QWidget* parent)
    : QDialog(parent), tabs_(new QTabWidget(this)), status_(new StatusLine(this)) {
  setObjectName("PropertiesForm");
  setWindowTitle(tr("Properties"));
  BuildWindow();
  LookAt(std::move(document), std::move(file), has_text_part);
}

void PropertiesForm::BuildWindow() {
  resize(640, 520);
  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  for (const PropertyRow& row : kPropertyRows) {
    auto* label = new QLabel();
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft) | Qt::AlignVCenter);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    label->setMinimumWidth(1);
    labels_.push_back(grid->Add(row.name, tr(row.label), label));
  }
  column->Add(status_);
  tabs_->setObjectName("PropertiesTabs");
  finding_list_ = AddList("FindingsList", tr("What would hurt the mailing"), findings_);
  link_list_ = AddList("LinksList", tr("Links"), links_);
  picture_list_ = AddList("PicturesList", tr("Pictures"), pictures_);
  column->Add(tabs_, 1);
  auto* buttons = column->AddButtons(QDialogButtonBox::Close);
  buttons->button(QDialogButtonBox::Close)->setFocus();
}

RowList* PropertiesForm::AddList(const char* name, const QString& title, std::vector<QString>& rows) {
  auto* list = new RowList(
      name, title, std::vector<RowColumn>(1), [&rows](std::size_t row, int) { return rows.at(row); }, this);
  list->SetLongText(LongText::kWrapped);
  list->SetEmptyText(tr("Looking at the message…"));
  tabs_->addTab(list, title);
  return list;
}

void PropertiesForm::LookAt(document::MessageDocument document, std::filesystem::path file, bool has_text_part) {
  status_->Say(tr("Looking at the message…"));
  tabs_->setEnabled(false);
  task_.Start([this, document = std::move(document), file = std::move(file),
               has_text_part](const platform::CancelToken& cancel) -> std::function<void()> {
    const std::string& html = document.html;
    return [this, facts = document::PropertiesLoad(file.string(), document::TitleOf(html), html),
            look = document::LookAt(document, has_text_part, cancel)] {
      Show(facts);
      Show(look);
      emit Known();
    };
  });
}

void PropertiesForm::Show(const MessageProperties& properties) {
  for (std::size_t i = 0; i < kPropertyRows.size(); ++i) {
    const std::string& given = properties.*kPropertyRows[i].text;
    const bool is_ours = !kPropertyRows[i].is_theirs || given == "Unsaved" || given == "Not Available";
    const QString text = is_ours ? Translated(given) : ToQt(platform::Printable(given, kLongestShown));
    labels_[i]->setText(text);
    labels_[i]->setToolTip(PlainTip(text));
    labels_[i]->setAccessibleName(tr(kPropertyRows[i].label) + ' ' + text);
  }
}

void PropertiesForm::Show(const Result<document::DocumentLook>& look) {
  if (!look) {
    for (RowList* list : {finding_list_, link_list_, picture_list_}) list->SetEmptyText({});
    return status_->Fail(look.error());
  }
  finding_list_->SetEmptyText(tr("Nothing was found that would hurt the mailing."));
  link_list_->SetEmptyText(tr("The message has no links."));
  picture_list_->SetEmptyText(tr("The message has no pictures."));
  status_->Say(InWords(SizeOf(*look)));
  tabs_->setEnabled(true);
  const QStringList found = InWords(look->findings);
  findings_.assign(found.begin(), found.end());
  links_ = Lines(look->links, MoreLinks(*look));
  pictures_ = Lines(look->pictures, MorePictures(*look));
  finding_list_->Reset(findings_.size());
  link_list_->Reset(links_.size());
  picture_list_->Reset(pictures_.size());
  const std::array counts = {static_cast<std::int64_t>(look->findings.size()), look->link_count, look->picture_count};
  for (int page = 0; page < static_cast<int>(counts.size()); ++page) {
    const auto count = counts.at(static_cast<std::size_t>(page));
    if (count > 0)
      tabs_->setTabText(page, QString("%1 (%2)").arg(tabs_->tabText(page), ToQt(platform::WithThousands(count))));
  }
}

}  // namespace quillcast::desktop
