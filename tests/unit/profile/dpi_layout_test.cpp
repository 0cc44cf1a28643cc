// The byte layout of the dynamic profile. One record of each width is typed by hand: the writer of the test
// profiles must produce it, and the reader must understand it.
#include "common/little_endian.h"
#include "profile/dpi_file.h"
#include "profile/dpi_lookup.h"
#include "profile/dpi_names.h"
#include "profile/dpi_record.h"
#include "tests/tools/product.h"
#include "tests/tools/profile_text.h"
#include "tests/tools/scratch.h"

#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <sstream>

using segment_ptr = std::unique_ptr<DPI_SEGMENT, decltype(&PGOPTI_Free_Segment)>;
using dpi_ptr = std::unique_ptr<DPI_FILE, decltype(&PGOPTI_Close_Dpi_File)>;

static std::string from_hex(const std::string& text) {
    std::string bytes;
    std::istringstream input(text);
    for (std::string byte; input >> byte;)
        bytes += static_cast<char>(std::stoi(byte, nullptr, 16));
    return bytes;
}

// runs 3, one record, word 99, text "one"
static const char kHeader[] = "0B DC 00 00  03 00 00 00  01 00 00 00  63 00 00 00  6F 6E 65 00";

// "g", "a.c", "f", "V"
static const char kStrings[] = "67 00  61 2E 63 00  66 00  56 00";

static std::string file_of(const std::string& record) {
    std::string bytes = from_hex(kHeader);
    bytes.resize(528, '\0');
    return bytes + record + from_hex(kStrings);
}

static const char kText[] = R"(
header runs 3 word 99 text one
record WIDTH
  file a.c
  function f
  routine g
  entry 1
  blocks 7:2=FIRST 9:4=6
  group2 2
  group3 5
  flags 3
  word 77
  address 0x1122334455667788
  vtable 0x99 V
)";

static std::string text_of(const char* width, const char* first) {
    std::string text = kText;
    text.replace(text.find("WIDTH"), 5, width);
    return text.replace(text.find("FIRST"), 5, first);
}

// The record begins at 0x210; its strings begin at 0x210 + 196 = 0x2D4.
static std::string narrow_record() {
    return from_hex(R"(
        10 02 00 00  C4 00 00 00  01 00 00 00  02 00 00 00  01 00 00 00  01 00 00 00  03 00 00 00  4D 00 00 00
        D6 02 00 00  DA 02 00 00  88 77 66 55 44 33 22 11  99 00 00 00 00 00 00 00  DC 02 00 00
        00 00 C0 3F  00 00 C0 40  00 00 00 40  00 00 A0 40)") +
           std::string(96, '\0') + from_hex(R"(
        D4 02 00 00
        01 00 00 00
        07 00 00 00 02 00 00 00  09 00 00 00 04 00 00 00)");
}

// The strings begin at 0x210 + 240 = 0x300.
static std::string wide_record() {
    return from_hex(R"(
        50 03 00 00  00 00 00 00  F0 00 00 00  01 00 00 00  02 00 00 00  01 00 00 00  01 00 00 00  4D 00 00 00
        03 00 00 00  00 00 00 00  02 03 00 00 00 00 00 00  06 03 00 00 00 00 00 00
        88 77 66 55 44 33 22 11  99 00 00 00 00 00 00 00  08 03 00 00 00 00 00 00
        03 00 00 01 00 00 00 00  06 00 00 00 00 00 00 00  02 00 00 00 00 00 00 00  05 00 00 00 00 00 00 00)") +
           std::string(96, '\0') + from_hex(R"(
        00 03 00 00 00 00 00 00
        01 00 00 00  00 00 00 00
        07 00 00 00 02 00 00 00  09 00 00 00 04 00 00 00)");
}

/// What the reader says of the record besides its names and block counts, whatever its width.
static void expect_fields(const std::string& bytes) {
    const scratch_directory scratch;
    const std::string name = scratch.put("p.dpi", bytes);
    const dpi_ptr file(PGOPTI_Open_Dpi_File(name.c_str()), PGOPTI_Close_Dpi_File);
    ASSERT_TRUE(file);
    EXPECT_STREQ(reinterpret_cast<const char*>(file->header_text.data()), "one");
    const segment_ptr segment(PGOPTI_Get_Segment(file.get(), name.c_str(), "a.c", "f"), PGOPTI_Free_Segment);
    ASSERT_TRUE(segment);
    const DPI_RECORD record = segment->view();
    EXPECT_EQ(DPI_counter_get(record, 3), 5.0F);
    EXPECT_EQ(DPI_entry_counter_get(record, 0), 6.0F);
    EXPECT_EQ(file->index[0].max_entry_count, 2.0F) << "in each of three runs";
    EXPECT_EQ(file->max_entry_count, 2.0F);
    EXPECT_EQ(pgopti_Read_String(file.get(), name.c_str(), DPI_routine_name_get(record, 0)), "g");
    EXPECT_EQ(pgopti_Read_String(file.get(), name.c_str(), DPI_vtbl_name_get(record)), "V");
    EXPECT_TRUE(DPI_has_line_info(record));
    EXPECT_EQ(DPI_block_position_get(record, 1).line, 9U);
    EXPECT_EQ(DPI_block_position_get(record, 1).column, 4U);
}

TEST(DpiLayout, RecordsByHand) {
    const std::string narrow = file_of(narrow_record()), wide = file_of(wide_record());
    EXPECT_EQ(compile_profile_text(text_of("32", "1.5")), narrow);
    EXPECT_EQ(compile_profile_text(text_of("64", "0x1000003")), wide);
    expect_fields(narrow);
    expect_fields(wide);
}

TEST(DpiRecord, CountsThatNoIntegerHolds) {
    EXPECT_EQ(DPI_count_to_u64(0.99), 0U);
    EXPECT_EQ(DPI_count_to_u64(-5.0), 0U);
    EXPECT_EQ(DPI_count_to_u64(std::numeric_limits<double>::quiet_NaN()), 0U);
    EXPECT_EQ(DPI_count_to_u64(18446742974197923840.0), 18446742974197923840U) << "2^64 - 2^40, exact";
    const std::uint64_t most = DPI_count_to_u64(std::numeric_limits<double>::infinity());
    EXPECT_EQ(most, DPI_count_to_u64(18446744073709551616.0));
    EXPECT_GE(most, 18446742974197923840U);
    EXPECT_NE(most, ~std::uint64_t{0}) << "the value that marks a function never entered";
}

TEST(DpiRecord, ExactCounts) {
    const auto entries_of = [](const char* width, const char* counters) {
        const std::string bytes = compile_profile_text(
            std::string("header runs 1\nrecord ") + width +
            "\nfile a\nfunction f\nroutine f\nroutine g\nentry 0 1\n" + "blocks " + counters + "\n");
        const auto* start = reinterpret_cast<const unsigned char*>(bytes.data()) + PGOPTI_HEADER_SIZE;
        const DPI_RECORD record = {start, &DPI_layout_of(start)};
        return std::to_string(DPI_exact_counter_get(record, 0)) + " " +
               std::to_string(DPI_exact_entry_count(record));
    };
    EXPECT_EQ(entries_of("64", "0x1000003 0x8000000000000001"), "16777219 9223372036871553028");
    EXPECT_EQ(entries_of("64", "0xfffffffffffffffe 2"), "18446744073709551614 18446744073709551615");
    EXPECT_EQ(entries_of("32", "3.75 16777216"), "3 16777219") << "each truncated";
}

TEST(DpiFile, OpenProfilesOfBothWidthsAreIndependent) {
    const scratch_directory scratch;
    const auto put = [&](const char* name, const std::string& bytes) { return scratch.put(name, bytes); };
    const std::string narrow = put("n", file_of(narrow_record())), wide = put("w", file_of(wide_record()));
    const dpi_ptr first(PGOPTI_Open_Dpi_File(narrow.c_str()), PGOPTI_Close_Dpi_File);
    const dpi_ptr second(PGOPTI_Open_Dpi_File(wide.c_str()), PGOPTI_Close_Dpi_File);
    const segment_ptr a(PGOPTI_Get_Segment(first.get(), "n", "a.c", "f"), PGOPTI_Free_Segment);
    const segment_ptr b(PGOPTI_Get_Segment(second.get(), "w", "a.c", "f"), PGOPTI_Free_Segment);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(DPI_counter_get(a->view(), 0), 1.5F);
    EXPECT_EQ(DPI_exact_counter_get(b->view(), 0), 0x1000003U);
}

TEST(DpiRecord, SoundRecordsFitTheirSize) {
    const std::string record = wide_record();
    const auto sound = [](const std::string& bytes) {
        const auto* start = reinterpret_cast<const unsigned char*>(bytes.data());
        return DPI_record_is_sound({start, &PGOPTI_LAYOUT_64}, bytes.size());
    };
    const auto with = [&](std::size_t place, std::uint32_t value) {
        std::string changed = record;
        store_number(changed.data() + place, value, 4);
        return changed;
    };
    EXPECT_TRUE(sound(record));
    EXPECT_FALSE(sound(record.substr(0, record.size() - 1)));
    EXPECT_FALSE(sound(with(16, 3))) << "one block more than there is room for";
    EXPECT_FALSE(sound(with(24, 0xffffffff))) << "sizes that overflow 32 bits";
    EXPECT_FALSE(sound(with(12, 0x80000000)));
    EXPECT_TRUE(sound(with(216, 3))) << "an entry index may name a counter of the other groups";
    EXPECT_FALSE(sound(with(216, 4)));
}

TEST(DpiFile, NamesThatNoSeekReaches) {
    const scratch_directory scratch;
    // What is said while a profile is opened and its record is asked for.
    const auto said = [&](const std::string& changes) {
        const std::string name = scratch.put("p.dpi", compile_profile_text(text_of("64", "1") + changes));
        std::string step = "opening: ";
        const outcome end = run_product([&] {
            const dpi_ptr file(PGOPTI_Open_Dpi_File(name.c_str()), PGOPTI_Close_Dpi_File);
            step = "segment: ";
            const DPI_INDEX_ENTRY& entry = file->index.at(0);
            PGOPTI_Free_Segment(
                PGOPTI_Get_Segment(file.get(), name.c_str(), entry.file_name, entry.key_func_name));
        });
        const std::string failure =
            name + ": Invalid argument\nFATAL ERROR: fseek on file " + name + " failed\n";
        EXPECT_EQ(end.ended, end.status == 1);
        return step + (end.errors == failure ? "fseek" : end.errors);
    };
    for (const char* name : {"40 ", "48 ", "72 "}) {
        const std::string set = std::string("set u64 r0+") + name;
        EXPECT_EQ(said(set + "0x8000000000000000"), "opening: fseek") << name;
        EXPECT_EQ(said(set + "0xffffffffffffffff\ncut 0x300"), "opening: fseek") << name;
        EXPECT_EQ(said(set + "0x7fffffffffffffff"), "segment: ") << name;
        EXPECT_EQ(said(set + "0"), "segment: ") << name;
    }
    EXPECT_EQ(said("set u64 r0+208 0x8000000000000000"), "segment: fseek") << "a routine name";
    EXPECT_EQ(said("set u64 r0+208 0x7fffffffffffffff"), "segment: ");
    EXPECT_EQ(said("record 64\n file b\n function g\n blocks 1\nset u64 r0+40 0x8000000000000000\ncut 0x310"),
              "opening: fseek")
        << "before the next record is looked at";
}

TEST(DpiFile, LongNamesStoredTwiceAreOne) {
    const scratch_directory scratch;
    const std::string name = (scratch.path() / "p.dpi").string();
    const std::string file_line = "file " + std::string(5000, 'n') + "\n";
    std::string text = "header runs 1\n";
    for (const char* function : {"a", "b"})
        text += "record 64\n" + file_line + "function " + function + "\nblocks 1\n";
    write_file(name, compile_profile_text(text));
    const dpi_ptr file(PGOPTI_Open_Dpi_File(name.c_str()), PGOPTI_Close_Dpi_File);
    ASSERT_TRUE(file);
    EXPECT_EQ(std::string(file->index[1].file_name), std::string(5000, 'n'));
    EXPECT_EQ(file->index[0].file_name, file->index[1].file_name) << "look-ups would compare them";
    EXPECT_STREQ(file->index[1].key_func_name, "b");
}
