// The 16-bit type tags of the Java stream. Every value but the bare lengths
// opens with one of them, high byte first. Char and short share a tag; 0 is
// never a valid tag.
#pragma once

#include <cstdint>

constexpr uint16_t VORNJAVA_CLASS = 0x0001;
constexpr uint16_t VORNJAVA_CHAR_OR_SHORT = 0x0002;
constexpr uint16_t VORNJAVA_INT = 0x0008;
constexpr uint16_t VORNJAVA_LONG = 0x0020;
constexpr uint16_t VORNJAVA_STRING = 0x0080;
constexpr uint16_t VORNJAVA_STRING_ARRAY = 0x0100;
constexpr uint16_t VORNJAVA_BYTE = 0x0200;
constexpr uint16_t VORNJAVA_BYTE_ARRAY = 0x0400;
constexpr uint16_t VORNJAVA_BOOLEAN = 0x0800;
constexpr uint16_t VORNJAVA_CLASS_HANDLE = 0x2000;
constexpr uint16_t VORNJAVA_VECTOR = 0x4000;
