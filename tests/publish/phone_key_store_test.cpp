#include "publish/phone_key_store.h"

#include <gtest/gtest.h>

#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::keyFilledWith;

TEST(MemoryPhoneKeyStore, StartsEmpty) {
    EXPECT_FALSE(MemoryPhoneKeyStore().load());
}

TEST(MemoryPhoneKeyStore, KeepsTheKeyThatWasThereFirst) {
    MemoryPhoneKeyStore store;
    EXPECT_EQ(store.addIfAbsent(keyFilledWith('a')), keyFilledWith('a'));
    EXPECT_EQ(store.addIfAbsent(keyFilledWith('b')), keyFilledWith('a'));
    EXPECT_EQ(store.load(), keyFilledWith('a'));
}

TEST(MemoryPhoneKeyStore, ReplacesAndRemovesWhetherOrNotThereIsAKey) {
    MemoryPhoneKeyStore store;
    store.remove();
    store.replace(keyFilledWith('a'));
    EXPECT_EQ(store.key, keyFilledWith('a'));
    store.replace(keyFilledWith('b'));
    EXPECT_EQ(store.load(), keyFilledWith('b'));
    store.remove();
    EXPECT_FALSE(store.load());
    EXPECT_EQ(store.addIfAbsent(keyFilledWith('c')), keyFilledWith('c'));
}

}  // namespace
}  // namespace brimwatch
