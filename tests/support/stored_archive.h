// A ZIP archive whose parts are stored as they are, for tests that say what is in it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillcast::test {

struct StoredPart {
  std::string name;
  std::string content;
  std::int64_t claimed_size = -1;  // of what it unpacks to, where the directory is to say something else
  bool is_encrypted = false;
};

inline std::string LittleEndian(std::uint64_t number, int size) {
  std::string bytes;
  for (int at = 0; at < size; ++at, number >>= 8) bytes += static_cast<char>(number);
  return bytes;
}

inline std::uint32_t Crc32(std::string_view bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char c : bytes) {
    crc ^= static_cast<std::uint8_t>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
  }
  return ~crc;
}

inline std::string StoredArchive(const std::vector<StoredPart>& parts) {
  std::string archive;
  std::string directory;
  for (const StoredPart& part : parts) {
    const std::uint64_t unpacked =
        part.claimed_size < 0 ? part.content.size() : static_cast<std::uint64_t>(part.claimed_size);
    const std::string common = LittleEndian(20, 2) + LittleEndian(part.is_encrypted ? 1 : 0, 2) + LittleEndian(0, 6) +
                               LittleEndian(Crc32(part.content), 4) + LittleEndian(part.content.size(), 4) +
                               LittleEndian(unpacked, 4) + LittleEndian(part.name.size(), 2) + LittleEndian(0, 2);
    directory +=
        "PK\1\2" + LittleEndian(20, 2) + common + LittleEndian(0, 10) + LittleEndian(archive.size(), 4) + part.name;
    archive += "PK\3\4" + common + part.name + part.content;
  }
  const std::string counts = LittleEndian(parts.size(), 2) + LittleEndian(parts.size(), 2);
  return archive + directory + "PK\5\6" + LittleEndian(0, 4) + counts + LittleEndian(directory.size(), 4) +
         LittleEndian(archive.size(), 4) + LittleEndian(0, 2);
}

// The least that is a workbook, with one sheet of these rows.
inline std::vector<StoredPart> Workbook(const std::string& rows) {
  const std::string xml = "<?xml version=\"1.0\"?>";
  return {
      {"[Content_Types].xml", xml + "<Types/>"},
      {"xl/workbook.xml", xml + "<workbook><sheets><sheet name='S' r:id='rId1'/></sheets></workbook>"},
      {"xl/_rels/workbook.xml.rels",
       xml + "<Relationships><Relationship Id='rId1' Type='x/worksheet' Target='worksheets/sheet1.xml'/>"
             "<Relationship Id='rId2' Type='x/sharedStrings' Target='/xl/sharedStrings.xml'/>"
             "<Relationship Id='rId3' Type='x/styles' Target='styles.xml'/></Relationships>"},
      {"xl/sharedStrings.xml",
       xml +
           "<sst><si><t>Ada &amp; Co</t></si><si><r><t>two </t></r><r><t>parts</t></r><rPh><t>x</t></rPh></si></sst>"},
      {"xl/styles.xml",
       xml + "<styleSheet><numFmts><numFmt numFmtId='164' formatCode='00000'/><numFmt numFmtId='165' "
             "formatCode='[Red]d\\.m\\.yy'/><numFmt numFmtId='166' formatCode='0.0&quot; days&quot;'/></numFmts>"
             "<cellStyleXfs><xf numFmtId='14'/></cellStyleXfs><cellXfs><xf numFmtId='0'/><xf numFmtId='164'/>"
             "<xf numFmtId='165'/><xf numFmtId='22'/><xf numFmtId='166'/></cellXfs></styleSheet>"},
      {"xl/worksheets/sheet1.xml", xml + "<worksheet><sheetData>" + rows + "</sheetData></worksheet>"}};
}

// One with a sheet "One", which has a title above its headings, and another one "T&wo".
inline std::vector<StoredPart> TwoSheets() {
  const auto cell = [](const char* text) { return "<c t='str'><v>" + std::string(text) + "</v></c>"; };
  auto parts = Workbook("<row r='1'>" + cell("As of March") + "</row><row r='3'>" + cell("E-Mail") +
                        "</row><row r='4'>" + cell("a@x.org") + "</row>");
  parts[1].content =
      "<workbook><sheets><sheet name='One' r:id='rId1'/><sheet name='T&amp;wo' r:id='rId4'/></sheets></workbook>";
  parts[2].content.insert(parts[2].content.find("</Rel"),
                          "<Relationship Id='rId4' Type='x/worksheet' Target='two.xml'/>");
  parts.push_back({"xl/two.xml", "<worksheet><row r='1'>" + cell("b@x.org") + "</row></worksheet>"});
  return parts;
}

inline std::vector<StoredPart> OpenDocument(const std::string& tables) {
  return {{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
          {"META-INF/manifest.xml", "<?xml version=\"1.0\"?><manifest/>"},
          {"content.xml", "<?xml version=\"1.0\"?><office:document-content><office:body><office:spreadsheet>" + tables +
                              "</office:spreadsheet></office:body></office:document-content>"}};
}

}  // namespace quillcast::test
