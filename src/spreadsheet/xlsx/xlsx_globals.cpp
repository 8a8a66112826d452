#include "spreadsheet/xlsx/xlsx_globals.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/cells/typed_value.h"
#include "spreadsheet/xlsx/xlsx_text.h"

namespace korvex {
namespace {

using xlsx::kMain;

// A limit for the texts of relationships: every target is joined to the folder of its part, so that
// a long folder name and many targets would take much memory.
constexpr std::size_t kLongestPartName = 1024;

struct Relationship {
  std::string id;
  std::string kind;  // "worksheet"
  std::string part;
};

std::string FolderOf(std::string_view part) {
  return std::string(part.substr(0, part.rfind('/') + 1));
}

// "../media/x" as seen from "xl/worksheets/" is "xl/media/x".
std::string ResolveTarget(std::string folder, std::string_view target) {
  if (target.starts_with('/') || target.starts_with('\\')) folder.clear();
  while (!target.empty()) {
    const std::size_t end = target.find_first_of("/\\");
    const std::string_view step = target.substr(0, end);
    const bool is_last = end == std::string_view::npos;
    target.remove_prefix(is_last ? target.size() : end + 1);
    if (step == "..") {
      if (!folder.empty()) folder.pop_back();
      folder.resize(folder.rfind('/') + 1);
    } else if (!step.empty() && step != ".") {
      folder += step;
      if (!is_last) folder += '/';
    }
  }
  return folder;
}

// <Relationships><Relationship Id="rId1" Type="http://…/worksheet" Target="worksheets/sheet1.xml"/>
class RelationshipsHandler : public XmlHandler {
 public:
  RelationshipsHandler(std::string folder, std::size_t most)
      : folder_(std::move(folder)), most_(most) {}

  bool StartElement(const XmlElement& element) override {
    if (element.Depth() == 1) return element.Is(xlsx::kPackage, "Relationships");
    const auto id = element.Attribute("Id");
    const auto type = element.Attribute("Type");
    const auto target = element.Attribute("Target");
    const bool is_external = element.Attribute("TargetMode") == "External";
    if (element.Is(xlsx::kPackage, "Relationship") && id && type && target && !is_external &&
        found.size() < most_) {
      std::string part = ResolveTarget(folder_, *target);
      if (std::max({part.size(), type->size(), id->size()}) > kLongestPartName) return false;
      found.push_back(
          {std::string(*id), std::string(type->substr(type->rfind('/') + 1)), std::move(part)});
    }
    return false;
  }

  std::vector<Relationship> found;

 private:
  std::string folder_;
  std::size_t most_;
};

// The relationships of a part. They have a part of their own: those of "xl/workbook.xml" in
// "xl/_rels/workbook.xml.rels". No more are kept than the archive has parts.
std::vector<Relationship> ReadRelationships(const ZipArchive& archive, const std::string& part,
                                            ReadBudget& budget) {
  const std::string folder = FolderOf(part);
  const std::string list = folder + "_rels/" + part.substr(folder.size()) + ".rels";
  RelationshipsHandler handler(folder, archive.PartCount());
  if (archive.Has(list)) ParseXmlPart(archive, list, budget, xlsx::kNamespaces, handler);
  return std::move(handler.found);
}

SheetKind KindOf(const Relationship& relationship) {
  if (relationship.kind == "chartsheet") return SheetKind::kChart;
  if (relationship.kind == "dialogsheet") return SheetKind::kDialog;
  if (relationship.kind.ends_with("acrosheet")) return SheetKind::kMacro;  // xlMacrosheet
  return SheetKind::kWorksheet;
}

// <workbook><workbookPr date1904="1"/>
//   <sheets><sheet name="data" r:id="rId1"/></sheets>
//   <calcPr fullCalcOnLoad="1"/>
class WorkbookHandler : public XmlHandler {
 public:
  WorkbookHandler(const std::vector<Relationship>& relationships, std::size_t most_sheets,
                  const ReadBudget& budget, XlsxGlobals& globals)
      : most_sheets_(most_sheets), budget_(budget), globals_(globals) {
    for (const Relationship& relationship : relationships) {
      relationships_.try_emplace(relationship.id, relationship);
    }
  }

  bool StartElement(const XmlElement& element) override {
    if (element.Depth() == 1) return is_workbook_ = element.Is(kMain, "workbook");
    if (element.Depth() == 2) {
      if (element.Is(kMain, "workbookPr")) globals_.uses_1904 = element.IsOn("date1904");
      if (element.Is(kMain, "calcPr")) {
        globals_.calculates_on_load = element.IsOn("fullCalcOnLoad");
      }
      return element.Is(kMain, "sheets");
    }
    if (element.Is(kMain, "sheet")) AddSheet(element);
    return false;
  }

  bool IsWorkbook() const { return is_workbook_; }

 private:
  void AddSheet(const XmlElement& element) {
    if (globals_.sheets.size() == most_sheets_) {
      Refuse("is damaged: it lists more sheets than its zip archive has parts");
    }
    SheetInfo sheet;
    sheet.name = element.Attribute("name").value_or("");
    budget_.CheckMemory(names_size_ += sheet.name.size());
    std::string part;
    if (const auto id = element.Attribute(xlsx::kRelations, "id")) {
      const auto found = relationships_.find(*id);
      if (found != relationships_.end()) {
        sheet.kind = KindOf(found->second);
        part = found->second.part;
      }
    }
    globals_.sheets.push_back(std::move(sheet));
    globals_.sheet_parts.push_back(std::move(part));
  }

  std::map<std::string_view, const Relationship&> relationships_;  // by id, the first of each
  std::size_t most_sheets_;
  const ReadBudget& budget_;
  std::size_t names_size_ = 0;  // of sheets
  XlsxGlobals& globals_;
  bool is_workbook_ = false;
};

// <styleSheet><numFmts><numFmt numFmtId="164" formatCode="yyyy"/></numFmts>
//   <cellXfs><xf numFmtId="164"/></cellXfs>
// Cells name their format by its index in cellXfs.
class StylesHandler : public XmlHandler {
 public:
  explicit StylesHandler(const ReadBudget& budget) : budget_(budget) {}

  bool StartElement(const XmlElement& element) override {
    switch (element.Depth()) {
      case 1:
        return has_styles_ = element.Is(kMain, "styleSheet");
      case 2:
        return element.Is(kMain, "numFmts") || element.Is(kMain, "cellXfs");
      default:
        break;
    }
    const std::string_view digits = element.Attribute("numFmtId").value_or("0");
    int id = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), id);
    if (element.Is(kMain, "numFmt")) {
      if (const auto code = element.Attribute("formatCode")) written_[id] = DateFormOf(*code);
    } else if (element.Is(kMain, "xf")) {
      formats_.push_back(id);
    }
    budget_.CheckMemory(formats_.size() * sizeof(int) + written_.size() * kFormatMemory);
    return false;
  }

  bool HasStyles() const { return has_styles_; }
  std::vector<DateForm> DateForms() const {
    std::vector<DateForm> forms;
    for (const int id : formats_) {
      const auto written = written_.find(id);
      forms.push_back(written != written_.end() ? written->second : BuiltInDateForm(id));
    }
    return forms;
  }

 private:
  // More than an entry of the map takes.
  static constexpr std::size_t kFormatMemory = 64;

  const ReadBudget& budget_;
  bool has_styles_ = false;
  std::map<int, DateForm> written_;  // by id of the number format
  std::vector<int> formats_;
};

// The name of the package's main part. Some programs leave out the relationships of the package,
// but all give the part the same name.
std::string FindWorkbookPart(const ZipArchive& archive, ReadBudget& budget) {
  for (const Relationship& relationship : ReadRelationships(archive, "", budget)) {
    if (relationship.kind == "officeDocument") return relationship.part;
  }
  static constexpr const char* kUsual = "xl/workbook.xml";
  if (!archive.Has(kUsual)) RefuseAs("a zip archive");
  return kUsual;
}

}  // namespace

XlsxGlobals ReadXlsxGlobals(const ZipArchive& archive, ReadBudget& budget) {
  const std::string part = FindWorkbookPart(archive, budget);
  if (part.ends_with(".bin")) {
    Refuse("is an .xlsb workbook, which cannot be read: save it as .xlsx");
  }
  // Other documents are packages of the same form; their main part has a folder of its own.
  if (part.starts_with("word/")) RefuseAs("a Word document");
  if (part.starts_with("ppt/")) RefuseAs("a PowerPoint presentation");
  const std::vector<Relationship> relationships = ReadRelationships(archive, part, budget);
  XlsxGlobals globals;
  for (const Relationship& relationship : relationships) {
    if (relationship.kind == "sharedStrings") globals.strings_part = relationship.part;
    if (relationship.kind == "styles") globals.styles_part = relationship.part;
  }
  WorkbookHandler handler(relationships, archive.PartCount(), budget, globals);
  ParseXmlPart(archive, part, budget, xlsx::kNamespaces, handler);
  if (!handler.IsWorkbook()) Refuse("is damaged: its part " + part + " does not hold a workbook");
  return globals;
}

std::vector<DateForm> ReadXlsxDateForms(const ZipArchive& archive, const std::string& part,
                                        ReadBudget& budget) {
  if (part.empty()) return {};
  StylesHandler handler(budget);
  ParseXmlPart(archive, part, budget, xlsx::kNamespaces, handler);
  if (!handler.HasStyles()) Refuse("is damaged: its part " + part + " does not hold styles");
  return handler.DateForms();
}

}  // namespace korvex
