#include "runtime/ClassRegistry.h"

#include <gtest/gtest.h>

#include <memory>

namespace tallyforge {
namespace {

struct First final : NSObject {};
struct Second final : NSObject {
    First own;
    std::vector<InstanceVariable> instanceVariables() const override { return {{"own", &own}}; }
};

template <typename Class>
ObjCClass classFor() {
    return {[] { return std::make_shared<Class>(); }};
}

TEST(ClassRegistry, UnknownNamesHaveNoClass) {
    EXPECT_EQ(NSClassFromString("RegistryTestUnknown"), nullptr);
    EXPECT_EQ(NSClassFromString(""), nullptr);
}

TEST(ClassRegistry, MakesInstancesByName) {
    RegisterClass("RegistryTestFirst", classFor<First>());
    const ObjCClass* cls = NSClassFromString("RegistryTestFirst");
    ASSERT_NE(cls, nullptr);
    auto one = cls->alloc();
    auto other = cls->alloc();
    EXPECT_NE(dynamic_cast<First*>(one.get()), nullptr);
    EXPECT_NE(one, other);
    EXPECT_EQ(NSClassFromString("registrytestfirst"), nullptr);
    RegisterClass("RegistryTestFirst", {});
}

TEST(ClassRegistry, TheLastRegistrationCounts) {
    RegisterClass("RegistryTestName", classFor<First>());
    RegisterClass("RegistryTestName", classFor<Second>());
    auto made = NSClassFromString("RegistryTestName")->alloc();
    EXPECT_NE(dynamic_cast<Second*>(made.get()), nullptr);
    RegisterClass("RegistryTestName", {});
    EXPECT_EQ(NSClassFromString("RegistryTestName"), nullptr);
}

TEST(ClassRegistry, InstanceVariablesAreThoseThatTheClassShows) {
    EXPECT_TRUE(First().instanceVariables().empty());
    Second second;
    auto variables = second.instanceVariables();
    ASSERT_EQ(variables.size(), 1u);
    EXPECT_STREQ(variables[0].name, "own");
    EXPECT_EQ(variables[0].value, &second.own);
}

} // namespace
} // namespace tallyforge
