// What winmail.dat calls what is in it.
#pragma once

#include <cstdint>

namespace quillcast::mail_file {

// Attributes, by type and number.
enum Attribute : std::uint32_t {
  kCodePage = 0x00069007,
  kNewAttachment = 0x00069002,
  kSubject = 0x00018004,
  kTitle = 0x00018010,
  kData = 0x0006800F,
  kAttachmentProperties = 0x00069005,
  kMessageProperties = 0x00069003,
  kBodyText = 0x0002800C,
};

// Properties, by number.
enum Property : std::uint16_t {
  kPropertyBody = 0x1000,
  kPropertyRtf = 0x1009,  // compressed
  kPropertyHtml = 0x1013,
  kPropertyDisplayName = 0x3001,
  kPropertyContent = 0x3701,
  kPropertyLongName = 0x3707,
  kPropertyMediaType = 0x370E,
  kPropertyContentId = 0x3712,
};

// Types of properties; kManyValues is added to them.
enum PropertyType : std::uint16_t {
  kObject = 0x000D,
  kText8 = 0x001E,
  kText16 = 0x001F,
  kBinary = 0x0102,
  kManyValues = 0x1000,
};

// The bytes that a value of a fixed size takes, filled up to four; 0 for one that has a length before it.
inline std::uint32_t SizeOf(std::uint16_t type) {
  switch (type) {
    case kObject:
    case kText8:
    case kText16:
    case kBinary:
      return 0;
    case 0x0005:  // a double
    case 0x0006:  // money
    case 0x0007:  // a time as a double
    case 0x0014:  // 64 bits
    case 0x0040:  // a time
      return 8;
    case 0x0048:  // a GUID
      return 16;
    default:
      return 4;
  }
}

}  // namespace quillcast::mail_file
