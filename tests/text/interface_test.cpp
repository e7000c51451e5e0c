// What the interface promises its callers: results instead of exceptions, handles that can be used
// again, no lock, no growth, and a library object that stays the caller's.

#include <gtest/gtest.h>
#include <sgbk/EncodingConvertor.h>
#include <sys/wait.h>
#include <unistd.h>
#include <sgbk/text.hpp>

#include <atomic>
#include <thread>

#include "support/allocation.h"
#include "support/engine.h"

namespace sgbk_test {
namespace {

const std::string kText =
    "&copy; \xE4\xB8\xAD\xE6\x96\x87\xE5\xAD\x97\n" + std::string(2000, 'x') + "\xF0\x9F\x98\x80\n";

// From opening to closing; whether there was memory for all of it.
bool convertWithFailures(const char* from, long allocations) {
  allocationsLeft = allocations;
  const Handle c(sgbk_open(from, "gbk"));
  sgbk_result result = c == nullptr ? SGBK_NO_MEMORY : SGBK_OK;
  for (const char* const option : {"entities", "trim-punct", "declare", "losses"}) {
    if (result == SGBK_OK) result = sgbk_set(c.get(), option, nullptr);
  }
  if (result == SGBK_OK) result = sgbk_set(c.get(), "replace", "a longer one: \xE3\x80\x93");
  if (result == SGBK_OK) result = feed(c.get(), kText, true);
  allocationsLeft = -1;
  if (result == SGBK_OK || c == nullptr) return result == SGBK_OK;
  EXPECT_EQ(result, SGBK_NO_MEMORY);
  EXPECT_STRNE(sgbk_error(c.get()), "");
  // With memory again, the same converter is as good as new.
  sgbk_reset(c.get());
  EXPECT_EQ(feed(c.get(), kText, true), SGBK_OK);
  return false;
}

TEST(Interface, TellsWhereMemoryEnds) {
  // First while the process has no tables yet, then with all of them.
  for (const bool isCold : {true, false}) {
    for (const char* const from : {"utf-8", "auto", "ucs-2"}) {
      const long before = alive;
      long allocations = 1;
      while (!convertWithFailures(from, allocations)) ASSERT_LT(++allocations, 10000);
      EXPECT_GT(allocations, 10);
      EXPECT_TRUE(isCold || alive == before) << alive - before;
    }
  }
}

TEST(Interface, NeedsNoMoreMemoryForMoreText) {
  const std::string piece = "<p>\xE3\x80\x82 \xE3\x80\x82&&&" + std::string(1000, '.');
  std::string blanks;  // of which each long run of marks leaves one more
  for (int i = 0; i < 20; ++i) blanks += ".........\xA1\xF6 ";
  for (const char* const setup : {"utf-8 utf-8 entities trim-punct truncate=100", "big5 gbk html",
                                  "auto utf-16le", "gbk gbk trim-punct"}) {
    const std::string text = *setup == 'u' ? piece : *setup == 'g' ? blanks : piece + '\n';
    const Handle c = open(setup);
    for (int i = 0; i < 3000; ++i) {
      if (i == 100) allocationsLeft = 1;
      EXPECT_EQ(feed(c.get(), text), SGBK_OK);
    }
    allocationsLeft = -1;
  }
}

TEST(Interface, LeavesTheLibrarysObjectToItsCaller) {
  const Handle first = open("big5 utf-8");
  EncodingConvertor::clear();
  for (const std::string& from : names(sgbk_sources)) {
    for (const std::string& to : names(sgbk_targets))
      convert(setupOf(from, to, 7), "a\n\xA4\xA4 &amp;\n");
  }
  EXPECT_EQ(convert(first.get(), "\xA4\xA4", {}).text, "\xE4\xB8\xAD");
  EXPECT_EQ(EncodingConvertor::getInstance(), nullptr);
}

TEST(Interface, ServesManyThreadsFromTheFirstCallOn) {
  std::atomic<int> waiting = 8;
  std::vector<std::jthread> threads;
  for (unsigned i = 0; i < 8; ++i) {
    threads.emplace_back([&waiting, i] {
      for (--waiting; waiting != 0;) std::this_thread::yield();
      std::mt19937 random(i % 2);
      for (int k = 0; k < 40; ++k) {
        const std::string setup =
            setupOf("auto", names(sgbk_targets)[random() % 6], random() & random());
        EXPECT_EQ(disagreement(setup, randomText(wordsOf("utf-8"), 50, random), {3}), "");
      }
    });
  }
}

TEST(Interface, WorksInTheChildOfAFork) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer's own allocator stays locked in the child";
#endif
  std::atomic<bool> isDone = false;
  std::jthread other([&] {
    while (!isDone) {
      EncodingConvertor::clear();
      EncodingConvertor::initializeInstance(nullptr);
      textOf("utf-8 big5 traditional", "\xE4\xBA\x91");
    }
  });
  for (int i = 0; i < 100; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      EncodingConvertor::initializeInstance(nullptr);
      _exit(textOf(i % 2 == 0 ? "utf-8 gbk" : "utf-8 utf-16le", "a")[0] == 'a' ? 0 : 1);
    }
    int status;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  isDone = true;
}

TEST(Interface, SaysWhatIsWrong) {
  const char* const kRows[][4] = {
      {"big5 gbk", "tidy", nullptr, "unknown option"},
      {"big5 gbk", "truncate", "8x", "not a number from 1 to 1000000: '8x'"},
      {"big5 gbk", "truncate", nullptr, "truncate"},
      {"big5 gbk", "entities", "9", "entities"},
      {"big5 gbk", "no-simplify", nullptr, "no-simplify works from gbk and hz only"},
      {"gbk gbk-wide", "html", nullptr, "gbk-wide has no half-width characters"},
      {"gbk gbk", "traditional", nullptr, "traditional works to big5 only"},
      {"gbk gbk", "replace", "\xF0\x9F\x98\x80", "gbk can hold: '\xF0\x9F\x98\x80'"},
      {"gbk gbk", "replace", "a\n", "gbk can hold: 'a\n'"},
  };
  for (const auto& [setup, option, value, error] : kRows) {
    const Handle c = open(setup);
    sgbk_result result = sgbk_set(c.get(), option, value);
    if (result == SGBK_OK) result = feed(c.get(), {});
    EXPECT_EQ(result, SGBK_USAGE) << error;
    EXPECT_NE(std::string(sgbk_error(c.get())).find(error), std::string::npos) << error;
  }
  const Handle c = open("gbk gbk strict entities=0");
  EXPECT_EQ(convert(c.get(), "&lt;\ny\xFF", {}).text, "&lt;\n");
  const Converted again = convert(c.get(), "x", {});
  EXPECT_EQ(again.text + again.error, "the input has ended: reset comes first");
  EXPECT_EQ(sgbk_set(c.get(), "entities", nullptr), SGBK_USAGE);
  sgbk_reset(c.get());
  EXPECT_STREQ(sgbk_error(c.get()), "");
  for (const char* const name : {"", "//IGNORE", "utf-7", "-"}) {
    EXPECT_TRUE(sgbk_source_name(name) == nullptr && sgbk_target_name(name) == nullptr) << name;
    EXPECT_TRUE(sgbk_open(name, "gbk") == nullptr && sgbk_open("gbk", name) == nullptr) << name;
  }
}

TEST(Interface, ThrowsErrorsInCpp) {
  sgbk::Converter first("utf-8", "gbk");
  sgbk::Converter c = std::move(first.set("strict").set("truncate", "80"));
  try {
    c.convert("\n\xFF", 2, true);
    FAIL();
  } catch (const sgbk::Error& error) {
    EXPECT_EQ(error.text, "\n");
    EXPECT_EQ(error.result, SGBK_LOST);
    EXPECT_STREQ(error.what(), "line 2, byte 1: FF is malformed");
  }
}

}  // namespace
}  // namespace sgbk_test
