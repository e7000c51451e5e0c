// The converter's life: creation, failure to create, destruction, and many threads on one object.

#include <gtest/gtest.h>
#include <sgbk/EncodingConvertor.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>
#include <vector>

#include "support/operations.h"
#include "support/sample_text.h"

namespace {
std::atomic<bool> memoryIsShort = false;
std::atomic<void*> converterAlive = nullptr;

void release(void* p) {
  if (p == converterAlive) converterAlive = nullptr;
  std::free(p);
}
}  // namespace

// Stands in for the allocation of large objects in the whole program, the library's included.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (size < 4 * 131072) return std::malloc(size);
  return converterAlive = memoryIsShort ? nullptr : std::malloc(size);
}
void* operator new(std::size_t size) {
  if (void* p = operator new(size, std::nothrow)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { release(p); }
void operator delete(void* p, std::size_t) noexcept { release(p); }

namespace {

using sgbk_test::Table;

TEST(Converter, LivesFromInitializeInstanceToClear) {
  EncodingConvertor::clear();
  EXPECT_EQ(EncodingConvertor::getInstance(), nullptr);
  EXPECT_EQ(EncodingConvertor::initializeInstance("anywhere"), 0);
  EncodingConvertor* const converter = EncodingConvertor::getInstance();
  EXPECT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  EXPECT_EQ(EncodingConvertor::getInstance(), converter);
  EXPECT_NE(converterAlive, nullptr);
  EncodingConvertor::clear();
  EXPECT_EQ(EncodingConvertor::getInstance(), nullptr);
  EncodingConvertor::clear();
  EXPECT_EQ(converterAlive, nullptr);
}

TEST(Converter, LeavesTheLockFreeWhenMemoryIsShort) {
  EncodingConvertor::clear();
  memoryIsShort = true;
  EXPECT_EQ(EncodingConvertor::initializeInstance(nullptr), -1);
  EXPECT_EQ(EncodingConvertor::getInstance(), nullptr);
  memoryIsShort = false;
  EXPECT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  EXPECT_NE(EncodingConvertor::getInstance(), nullptr);
}

TEST(Converter, HoldsTheTablesWithAsciiWidened) {
  ASSERT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  const Table& expected = sgbk_test::unicodeTable();
  for (unsigned uc = 0; uc < 65536; ++uc) {
    ASSERT_EQ(EncodingConvertor::getInstance()->getucgvalue(static_cast<unsigned short>(uc)),
              expected[uc])
        << std::hex << uc;
  }
}

TEST(Converter, ServesManyThreadsWhileOthersLookForIt) {
  EncodingConvertor::clear();
  std::string page;
  for (const auto& operation : sgbk_test::operations()) {
    if (std::string(operation.name) == "b52sgbk") page = sgbk_test::samplePage(operation);
  }
  const sgbk_test::Destination all{static_cast<long>(2 * page.size()), '\0'};
  const auto expected = twinPairs(sgbk_test::Stream::big5, page, all);
  std::vector<std::jthread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      EncodingConvertor* converter = nullptr;
      while (converter == nullptr) converter = EncodingConvertor::getInstance();
      for (int round = 0; round < 20; ++round) {
        sgbk_test::Outcome outcome{0, std::string(expected.dest.size(), '\0')};
        outcome.result =
            converter->b52sgbk(page.data(), static_cast<int>(page.size()), outcome.dest.data(),
                               static_cast<int>(outcome.dest.size()));
        EXPECT_TRUE(outcome == expected);
        EXPECT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
      }
    });
  }
  EncodingConvertor::initializeInstance(nullptr);
}

}  // namespace
