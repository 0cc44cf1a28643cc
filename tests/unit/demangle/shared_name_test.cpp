#include "demangle/shared_name.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

static std::string shared(const std::string& name) {
    std::string text;
    const bool is_template = find_shared_name(name, &text);
    return (is_template ? "template " : "") + text;
}

TEST(SharedName, OfTemplates) {
    const std::pair<const char*, const char*> names[] = {
        {"_ZN2ns3v126detail5writeIcNS0_8appenderEEET0_S4_b", "ns::v12::detail::write<>"},
        {"_ZNSt6vectorIiSaIiEE9push_backEOi", "std::vector<>::push_back"},
        {"_ZNSt3__16vectorIiNS_9allocatorIiEEE9push_backEOi", "std::__1::vector<>::push_back"},
        {"_ZNSs6appendEPKc", "std::basic_string<>::append"},
        {"_ZN1AIiE3barB5cxx11Ev", "A<>::bar"},
        {"_ZN1AI1BXadL_ZNS0_1fEvEEE1gEv", "A<>::g"},
        // Operators.
        {"_ZNK1AIiEltERKS0_", "A<>::operator<"},
        {"_ZltIiEbRK1AIT_ES3_", "operator<<>"},
        {"_ZN1AIiElsIcEERS0_T_", "A<>::operator<<<>"},
        {"_ZN1AIiEclIdEEvT_", "A<>::operator()<>"},
        {"_ZN1AIiEptEv", "A<>::operator->"},
        {"_ZN1AIiEnaEm", "A<>::operator_new[]"},
        {"_Zli2_sIJLc97EEEvv", "operator\"\"_s<>"},
        // The type of a conversion may be the argument: A<int>::operator int, A<bool>::operator bool.
        {"_ZN1AIiEcviEv", "A<>::operator_T"},
        {"_ZN1AIbEcvbEv", "A<>::operator_T"},
        {"_ZN1AcvT_IiEEv", "A::operator_T<>"},
        {"_ZN1AIiEcvSt6vectorIT_SaIS1_EEIdEEv", "A<>::operator_T<>"},
        // Variants.
        {"_ZN2ns1AIiEC1IdEET_", "ns::A<>::A<>"},
        {"_ZN2ns1AIiEC2IdEET_", "ns::A<>::A<>"},
        {"_ZN1AIiED0Ev", "A<>::~A"},
        {"_ZNSaIcEC2Ev", "std::allocator<>::allocator"},
        {"_ZN7derivedIiECI24baseIT_EEi", "derived<>::derived"},
        // What is local, and has other numbers in each instance.
        {"_ZZ1fIiEvT_ENKUliE_clEi", "f<>::{lambda}::operator()"},
        {"_ZZ1fIdEvT_ENKUldE3_clEd", "f<>::{lambda}::operator()"},
        {"_ZZN12_GLOBAL__N_11fIiEEvT_ENK3$_7clEv", "{anonymous}::f<>::{lambda}::operator()"},
        {"_ZZ4mainENKUlT_E_clIiEEDaS_", "main::{lambda}::operator()<>"},
        {"_ZZNK1AIiE1fEvENKUlTyT_E_clIiEEDaS_", "A<>::f::{lambda}::operator()<>"},
        {"_ZZZN1AIiE1fEvENKUlvE_clEvENKUlvE0_clEv", "A<>::f::{lambda}::operator()::{lambda}::operator()"},
        {"_ZZ1fIiEvT_EN3$_03runEv", "f<>::{unnamed}::run"},
        {"_ZZ1fIiEvT_ENUt_3runEv", "f<>::{unnamed}::run"},
        {"_ZZN1AIiEC1EvEN1BC1Ev", "A<>::A::B::B"},
    };
    for (const auto& [name, expected] : names)
        EXPECT_EQ(shared(name), std::string("template ") + expected) << name;
}

TEST(SharedName, OthersKeepTheirs) {
    // Functions that are no templates, whatever their parameters and the functions around them have.
    for (const char* const name :
         {"main", "_ZN1A3barEv", "_ZeqRK1AIiES2_", "_ZN1AcvSt6vectorIiSaIiEEEv", "_ZN1AC2Ev",
          "_ZZ1fSt6vectorIiSaIiEEENKUlvE_clEv", "_ZZN1AC1EvENKUlvE_clEv"})
        EXPECT_EQ(shared(name), name);
    // Broken names and those of other things.
    for (const char* const name :
         {"_Z", "_ZI", "_ZN1AIiE", "_ZN1AIiC1C1C1EEv", "_ZN9999999999AIiEv", "_ZNS0_1AIiEEv",
          "_ZN1AIiEC1C1Ev", "_ZTV1AIiE", "_Zst1AIiE", "_RINvC1a1fiE", "operator<<>"})
        EXPECT_EQ(shared(name), name);
    EXPECT_EQ(shared("_ZN1AC1Ev"), "_ZN1AC2Ev");
    EXPECT_EQ(shared("_ZN1AD0Ev"), "_ZN1AD2Ev");
    EXPECT_EQ(shared("_ZN1BCI11AEi"), "_ZN1BCI21AEi");
}

/// Each step of the walk is bounded by the name's length, even where demanglers read arguments twice.
TEST(SharedName, HostileNamesTakeLinearTime) {
    std::string conversions = "_ZN1AIiE";
    for (int i = 0; i < 5000; ++i)
        conversions += "cvT_I";
    EXPECT_EQ(shared(conversions), conversions);
    const std::string deep = "_Z1fI" + std::string(100000, 'P') + "iEvv";
    EXPECT_EQ(shared(deep), deep);
}
