// The converter's life: creation, failure to create, destruction, and many threads on one object.

#include <gtest/gtest.h>
#include <sgbk/EncodingConvertor.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <random>
#include <thread>
#include <tuple>

#include "support/operations.h"

namespace {
std::atomic<bool> memoryIsShort = false;
std::atomic<void*> converterAlive = nullptr;
std::atomic<int> convertersMade = 0;

void release(void* p) {
  if (p == converterAlive) converterAlive = nullptr;
  std::free(p);
}
}  // namespace

// Stands in for the allocation of large objects in the whole program, the library's included.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (size < 4 * 131072) return std::malloc(size);
  ++convertersMade;
  return converterAlive = memoryIsShort ? nullptr : std::malloc(size);
}
void* operator new(std::size_t size) {
  if (void* p = operator new(size, std::nothrow)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { release(p); }
void operator delete(void* p, std::size_t) noexcept { release(p); }

namespace {

using namespace sgbk_test;

TEST(Converter, LivesFromInitializeInstanceToClear) {
  EncodingConvertor::clear();
  memoryIsShort = true;
  EXPECT_EQ(EncodingConvertor::initializeInstance("anywhere"), -1);
  EXPECT_EQ(EncodingConvertor::getInstance(), nullptr);
  memoryIsShort = false;
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

TEST(Converter, HoldsTheTablesWithAsciiWidened) {
  ASSERT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  for (gchar_t uc = 0; const gchar_t expected : tables().unicode) {
    ASSERT_EQ(EncodingConvertor::getInstance()->getucgvalue(uc), expected) << uc;
    ++uc;
  }
}

// Half of the threads make the converter, the others wait for it; all convert at once.
TEST(Converter, ServesManyThreadsWhileItIsMade) {
  ASSERT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
  std::vector<std::tuple<const Operation*, std::string, Outcome>> cases;
  std::mt19937 random(8);
  for (const Operation& operation : operations()) {
    if (!operation.takesCapacity()) continue;
    std::string src = operation.alphabet();
    for (int i = 0; i < 2000; ++i) src += operation.randomCharacter(random);
    cases.emplace_back(&operation, src, operation.twin(src, {operation.enough(src.size()), '\0'}));
  }
  for (int round = 0; round < 5; ++round) {
    EncodingConvertor::clear();
    convertersMade = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&cases, maker = i % 2 == 0] {
        if (maker) EncodingConvertor::initializeInstance(nullptr);
        while (EncodingConvertor::getInstance() == nullptr) std::this_thread::yield();
        for (const auto& [operation, src, expected] : cases) {
          Outcome outcome{0, std::string(expected.dest.size(), '\0')};
          outcome.result = operation->call(src.data(), static_cast<int>(src.size()),
                                           outcome.dest.data(), operation->enough(src.size()));
          EXPECT_TRUE(outcome == expected) << operation->name;
          EXPECT_EQ(EncodingConvertor::initializeInstance(nullptr), 0);
        }
      });
    }
    threads.clear();
    EXPECT_EQ(convertersMade, 1);
  }
}

}  // namespace
