#include "common/demangle.h"
#include "common/demangle_bound.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

TEST(Demangle, NamesAndLengths) {
    std::size_t length = 99;
    EXPECT_STREQ(demangleName("_Z3fooi", 0, &length), "foo(int)");
    EXPECT_EQ(length, 9U);
    // Whatever the flag says; names that are not mangled come back as the very same pointer.
    for (const char* name : {"main", "_Zbar", "_Z", "", "__Z3fooi"}) {
        length = 99;
        EXPECT_EQ(demangleName(name, 1, &length), name);
        EXPECT_EQ(length, 0U);
    }
    EXPECT_EQ(demangleName(nullptr, 0, &length), nullptr);
    EXPECT_EQ(length, 0U);
}

TEST(Demangle, TextBeyondTheFirstBuffer) {
    std::string name = "_Z3foo", result = "foo(";
    for (int i = 0; i < 500; ++i) {
        name += "Ss";
        result += i == 0 ? "std::string" : ", std::string";
    }
    std::size_t length = 0;
    EXPECT_EQ(std::string(demangleName(name.c_str(), 0, &length)), result + ")");
    EXPECT_EQ(length, result.size() + 2);
    EXPECT_STREQ(demangleName("_Z3fooi", 0, &length), "foo(int)");
}

static constexpr std::size_t kLimit = 256 * 1024;

/// `part` again and again, with '#' replaced by the back reference to substitution `first`, `first` + 1, ...
static std::string growing(const std::string& start, const std::string& part, int first, int count) {
    std::string name = start;
    for (int i = first; i < first + count; ++i) {
        const char digit = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[i == 0 ? 0 : i - 1];
        for (const char c : part)
            name += c != '#' ? std::string(1, c) : i == 0 ? "S_" : std::string("S") + digit + "_";
    }
    return name;
}

TEST(DemangleBound, NamesThatDoubleAreLeftAlone) {
    const std::string tail(28, 'E');
    std::string conversion = "_ZN1Acv", chain = "i", local = "i";
    for (int i = 0; i < 28; ++i) {
        conversion += "T_I"; // demanglers read the arguments twice, at each level
        chain = "L_Z1gI1AI" + chain + "EEvT_T_E";
        local = "Z1gI" + local + "EvT_RT_E1x";
    }
    for (const std::string& name :
         {growing("_Z1fPi", "Fv##E", 0, 28), growing("_Z1fPi", "M##", 0, 28),
          growing("_Z1f1AIiiE", "S_I##E", 1, 28),
          growing("_Z1fI1AIiiE", "S0_I##E", 2, 28) + "EvT_", // through a template parameter
          growing("_Z1fIJEE1AIiiE", "S1_I##E", 3, 28) +
              "Dp1BIST_T_E", // an empty pack is searched for nonetheless
          growing("_Z1gIZ1fvEUt_Ev", "M##", 1, 28), growing("_Z1fIiEDTsr1AE1xE", "M##", 1, 28),
          conversion + "i" + tail + "Ev", "_Z1fI" + chain + "EvT_", "_Z1fI" + local + "EvT_"}) {
        EXPECT_FALSE(demangles_within(name.c_str(), kLimit)) << name;
        std::size_t length = 99;
        EXPECT_EQ(demangleName(name.c_str(), 0, &length), name.c_str());
        EXPECT_EQ(length, 0U);
    }
}

TEST(DemangleBound, ManyReferencesWithoutGrowthPass) {
    std::string params = "_Z1fI1BEvT_", args = "_Z1fIJ";
    for (int i = 0; i < 80; ++i) {
        params += "RKT_S_";
        args += "N1A1BIS_EE";
    }
    args += "EEvDpOT_";
    for (const std::string& name :
         {params, args,
          // Tables, thunks, arrays, abbreviations and expressions.
          std::string("_ZTV1A"), std::string("_ZTv0_n12_N1A1fEv"), std::string("_ZTcv0_n8_h16_N1A1fEv"),
          std::string("_ZGVZ1fvE1x"), std::string("_Z1fPA3_i"), std::string("_Z1fRA_i"),
          std::string("_ZSt4sortISaIcEEvT_S1_"), std::string("_Z1fIiEDTnw_T_EES0_"),
          std::string("_Z1fIJiiEEDTfrplT_EDpS0_"), std::string("_Z1fIiEDTplfp_fp_ET_"),
          std::string("_Z1gIiEDTclfp_fp_EET_"), std::string("_Z1fU8__vectorPi"),
          // A template behind an old "sr" is a substitution twice, without and with its arguments.
          std::string("_Z1fI1BE1AIXsr1XIT_E1xEES5_"),
          // Closures in templates, with references to one parameter in three nested signatures.
          std::string("_ZN3fmt2v96detail15do_parse_arg_idIcRZNS1_11parse_widthIcRNS1_13specs_checkerINS1_"
                      "13specs_handlerIcEEEEEEPKT_SB_SB_OT0_E13width_adapterEESB_SB_SB_SD_"),
          std::string(
              "_ZN4llvm3orc17ThreadSafeContext13withContextDoIZNS0_16ThreadSafeModule12withModuleDoIRNS0_"
              "14IRCompileLayer10IRCompilerEEEDcOT_EUlPNS_11LLVMContextEE_EEDcS9_")}) {
        std::size_t length = 0;
        EXPECT_NE(demangleName(name.c_str(), 0, &length), name.c_str()) << name;
        EXPECT_GT(length, name.size() / 2);
        EXPECT_FALSE(demangles_within(name.c_str(), length / 2)) << "the bound is below the text";
    }
}

TEST(DemangleBound, TextsOver64KiBAreLeftAlone) {
    // 2^9 and 2^13 times "A<int, int>".
    std::size_t length = 0;
    EXPECT_STRNE(demangleName(growing("_Z1f1AIiiE", "S_I##E", 1, 9).c_str(), 0, &length), nullptr);
    EXPECT_GT(length, 6000U);
    const std::string longer = growing("_Z1f1AIiiE", "S_I##E", 1, 13);
    EXPECT_EQ(demangleName(longer.c_str(), 0, &length), longer.c_str());
    EXPECT_EQ(length, 0U);
}

TEST(DemangleBound, BrokenNamesPassOnlyIfShort) {
    EXPECT_TRUE(demangles_within("_Z", kLimit));
    EXPECT_TRUE(demangles_within("_ZNS_T_", kLimit));
    // The demangler of GCC 12 never returns from these.
    for (const char* name :
         {"_Z1fIXsr1AC", "_Z1fIXsr1AC9EEvv", "_Z1fIXgssr1AUxEEvv", "_Z1fIXsr1AIN1BCxEE1xEEvv",
          "_Z1fIXsr1AIXsr1BDxEE1xEEvv", "_Z1fIXsrCx1xEEvv", "_Z1fIXsr1AIFiEDpRiE1xEEvv",
          "_Z1fIXsr1AIUlDF16_E_E1xEEvv",
          // A break in the scope, then what may be a broken destructor or closure.
          "_Z1fIXsr1AINDC1a1bEEE1xEEvv", "_Z1fIXsr1AILinEDiE1xEEvv", "_Z1fIXsr1AIXsr1B1xEDiE1yIiEEEvv",
          "_Z1fIXsr1AIDFLDn0EE1xEEvv", "_Z1fIXsr1AIXsr1S2_BEU1qsr1AIiEE1yIiEEEvv"})
        EXPECT_FALSE(demangles_within(name, kLimit)) << name;
    EXPECT_FALSE(demangles_within(("_Z1f" + std::string(100000, 'P') + "i").c_str(), kLimit));
    EXPECT_FALSE(demangles_within(("_Z1f" + std::string(40, '1') + growing("", "#", 0, 30)).c_str(), kLimit));
}
