#pragma once

#include <string>

#include "platform/file_system.h"
#include "spreadsheet/xls/byte_writer.h"

namespace korvex::test {

// What `write` puts into a ByteWriter.
template <class Write>
std::string Written(Write write) {
  struct : ReplacementFile {
    void Write(std::span<const std::byte> bytes) override {
      content.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    void Commit() override {}
    void CommitAsNew() override {}
    std::string content;
  } file;
  ByteWriter out(&file);
  write(out);
  out.Flush();
  return file.content;
}

}  // namespace korvex::test
