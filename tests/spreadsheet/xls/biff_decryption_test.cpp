#include <gtest/gtest.h>

#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

TEST(BiffDecryption, ReadsWorkbooksThatHaveTheDefaultPassword) {
  const struct {
    const char* encrypted;
    const char* clear;
  } cases[] = {
      {"libreoffice-rc4.xls", "libreoffice-results.xls"}, {"crypto-api.xls", "xlwt-plate.xls"},
      {"crypto-api-40-bit.xls", "xlwt-plate.xls"},        {"xor.xls", "xlwt-plate.xls"},
      {"xor-excel95.xls", "gnumeric-excel95.xls"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(ListingOf(DataFile(test.encrypted)), ListingOf(DataFile(test.clear)))
        << test.encrypted;
  }
}

TEST(BiffDecryption, AsksForOtherPasswords) {
  const char* const other = "needs a password: it is an encrypted .xls workbook";
  const char* const unknown = "is encrypted in a way that is not known";
  const Bytes api_verifier = U32(16) + Bytes(32, 'v') + U32(20) + Bytes(20, 'd');
  const auto api = [](std::uint32_t cipher, std::uint32_t bits) {
    return U16(1) + U16(2) + U16(2) + U32(4) + U32(32) + U32(4) + U32(0) + U32(cipher) +
           U32(0x8004) + U32(bits) + Bytes(12, '\0');
  };
  const struct {
    Bytes file_pass;
    const char* refusal;
  } cases[] = {
      {U16(0xB359) + U16(1), other},
      {U16(0) + U16(0xB358) + U16(0x9A0A), other},
      {U16(1) + U16(1) + U16(1) + Bytes(48, 'x'), other},
      {api(0x6801, 128) + api_verifier, other},
      {{}, unknown},
      {U16(1) + U16(1) + U16(1) + Bytes(47, 'x'), unknown},
      {U16(1) + U16(5) + U16(2) + Bytes(90, 'x'), unknown},
      {api(0x660E, 128) + api_verifier, unknown},
      {api(0x6801, 136) + api_verifier, unknown},
      {api(0x6801, 128) + api_verifier.substr(1), unknown},
  };
  for (const auto& test : cases) {
    const Bytes stream = OneSheet({}, Record(0x002F, test.file_pass));
    EXPECT_EQ(RefusalOf(stream), test.refusal) << testing::PrintToString(test.file_pass);
  }
}

}  // namespace
}  // namespace korvex::test
