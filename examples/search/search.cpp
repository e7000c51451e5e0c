// A search index of pages in Big5: the library converts them to simplified GBK, friso finds the
// words, SQLite stores them. The index can find words only, and the segmenter's dictionary has
// words in simplified characters only.
//
//     search CONFIGURATION index DATABASE PAGE...   also prints the share of ideographs that are
//                                                   in words, without the library and with it
//     search CONFIGURATION find DATABASE QUERY      QUERY in UTF-8, in either script

#include <iconv.h>
#include <sqlite3.h>

#include <cstring>
#include <fstream>
#include <memory>

#include "../entities.h"
#include "../markup.h"
#include "../text_io.h"
#include "segmenter.h"

namespace {

std::string recode(const char* to, const char* from, std::string text) {
  const iconv_t conversion = iconv_open(to, from);
  if (conversion == iconv_t(-1)) throw std::runtime_error("iconv_open");
  std::string out(text.size() * 2 + 16, '\0');
  char* source = text.data();
  char* dest = out.data();
  size_t left = text.size(), room = out.size();
  iconv(conversion, &source, &left, &dest, &room);
  iconv_close(conversion);
  if (left > 0) throw std::runtime_error(std::string("no ") + to + " text for " + source);
  out.resize(out.size() - room);
  return out;
}

// Page in Big5 to text in simplified GBK.
std::string simplifiedText(const std::string& big5) {
  const std::string text = withoutMarkup(big5);
  std::vector<gchar_t> units(text.size() + 1), trimmed(text.size() + 1);
  const int bytes = EncodingConvertor::getInstance()->b52sgbk(
      text.data(), static_cast<int>(text.size()), reinterpret_cast<char*>(units.data()),
      static_cast<int>(2 * text.size()));
  units.resize(static_cast<size_t>(bytes) / 2 + 1);
  units.back() = 0;
  trimmed.resize(trimgPunc(units.data(), units.size(), trimmed.data()) - 1);
  return withoutEntities(halfWidth(trimmed));
}

// Query in GBK, in either script, to simplified GBK.
std::string simplifiedQuery(const std::string& gbk) {
  std::vector<gchar_t> units(gbk.size() + 1);
  units.resize(static_cast<size_t>(EncodingConvertor::getInstance()->t2sgchar(
      gbk.c_str(), units.data(), static_cast<int>(units.size()), false)));
  return halfWidth(units);
}

size_t ideographsIn(const std::string& gbk) {
  size_t count = 0;
  for (size_t i = 0; i + 1 < gbk.size(); ++i) {
    const auto lead = static_cast<unsigned char>(gbk[i]);
    if (lead <= 0x80) continue;
    ++i;
    const auto trail = static_cast<unsigned char>(gbk[i]);
    count += lead <= 0xA0 || (lead >= 0xAA && trail < 0xA1) || (lead >= 0xB0 && lead <= 0xF7);
  }
  return count;
}

// The share of ideographs that are in words of two or more characters.
struct Share {
  size_t inWords = 0, all = 0;
  void add(Segmenter& segmenter, const std::string& gbk) {
    all += ideographsIn(gbk);
    segmenter.segment(gbk, [this](const std::string& word) {
      if (const size_t length = ideographsIn(word); length > 1) inWords += length;
    });
  }
  double percent() const { return 100.0 * static_cast<double>(inWords) / static_cast<double>(all); }
};

class Database {
 public:
  explicit Database(const char* path) { check(sqlite3_open(path, &handle_)); }
  ~Database() { sqlite3_close(handle_); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  template <class ForRow>
  void run(const char* sql, const std::vector<std::string>& values, ForRow forRow) {
    sqlite3_stmt* prepared = nullptr;
    check(sqlite3_prepare_v2(handle_, sql, -1, &prepared, nullptr));
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared,
                                                                          sqlite3_finalize);
    for (size_t i = 0; i < values.size(); ++i)
      check(sqlite3_bind_text(prepared, static_cast<int>(i + 1), values[i].c_str(), -1,
                              SQLITE_STATIC));
    int state = SQLITE_ROW;
    while ((state = sqlite3_step(prepared)) == SQLITE_ROW) forRow(prepared);
    if (state != SQLITE_DONE) check(state);
  }
  void run(const char* sql, const std::vector<std::string>& values = {}) {
    run(sql, values, [](sqlite3_stmt*) {});
  }

 private:
  void check(int state) {
    if (state != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(handle_));
  }
  sqlite3* handle_ = nullptr;
};

// Words with spaces between them, which is where the built-in tokenizer splits.
std::string spaced(Segmenter& segmenter, const std::string& gbk) {
  std::string words;
  segmenter.segment(gbk, [&words](const std::string& word) { words += word + ' '; });
  return recode("UTF-8", "GBK", words);
}

void index(Segmenter& segmenter, Database& database, char** paths) {
  Share before, after;
  database.run("CREATE VIRTUAL TABLE pages USING fts5(path UNINDEXED, title UNINDEXED, words)");
  database.run("BEGIN");
  for (; *paths != nullptr; ++paths) {
    std::ifstream file(*paths, std::ios::binary);
    const std::string page = readAll(file);
    const std::string text = simplifiedText(page);
    before.add(segmenter, recode("GBK", "BIG5", withoutMarkup(page)));
    after.add(segmenter, text);
    const size_t title = page.find("<title>") + std::strlen("<title>");
    database.run(
        "INSERT INTO pages VALUES (?, ?, ?)",
        {*paths, recode("UTF-8", "BIG5", page.substr(title, page.find("</title>") - title)),
         spaced(segmenter, text)});
  }
  database.run("COMMIT");
  std::printf("%zu ideographs; in words: %.1f %% as they are, %.1f %% through the library\n",
              after.all, before.percent(), after.percent());
}

int find(Segmenter& segmenter, Database& database, const char* query) {
  const std::string text = simplifiedQuery(recode("GBK", "UTF-8", query));
  int found = 0;
  database.run("SELECT path, title FROM pages WHERE words MATCH ? ORDER BY rank",
               {'"' + spaced(segmenter, text) + '"'}, [&found](sqlite3_stmt* row) {
                 std::printf("%s\t%s\n", sqlite3_column_text(row, 0), sqlite3_column_text(row, 1));
                 ++found;
               });
  return found > 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) try {
  const std::string action = argc > 4 ? argv[2] : "";
  if (action != "index" && action != "find") {
    std::fprintf(stderr, "usage: search CONFIGURATION index|find DATABASE PAGE...|QUERY\n");
    return 2;
  }
  if (EncodingConvertor::initializeInstance(nullptr) != 0) return 3;
  Segmenter segmenter(argv[1]);
  Database database(argv[3]);
  int status = 0;
  if (action == "index")
    index(segmenter, database, argv + 4);
  else
    status = find(segmenter, database, argv[4]);
  EncodingConvertor::clear();
  return status;
} catch (const std::exception& error) {
  std::fprintf(stderr, "search: %s\n", error.what());
  return 3;
}
