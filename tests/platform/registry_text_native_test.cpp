// What registry files say, sound ones and others.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/win32.h"
#include "tests/support/debugger_output.h"
#include "tests/support/registry_contents.h"

namespace {

using namespace std::string_literals;
using kor::test::setRegistryFile;

constexpr const char* kRoot = "HKEY_CURRENT_USER";
constexpr const char* kVersion5 = "Windows Registry Editor Version 5.00\r\n\r\n";

// The type and the bytes of a value, "4:\x01..." as a text; the failure's number.
std::string query(const char* path, const char* name) {
    HKEY key = nullptr;
    LSTATUS status = RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, KEY_READ, &key);
    if (status != 0) return "key " + std::to_string(status);
    DWORD type = 0;
    DWORD size = 0;
    status = RegQueryValueExA(key, name, nullptr, &type, nullptr, &size);
    std::string bytes(size, '\0');
    if (status == 0)
        status = RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()), &size);
    RegCloseKey(key);
    return status == 0 ? std::to_string(type) + ":" + bytes : "value " + std::to_string(status);
}

std::string utf16(const std::string& ascii) {
    std::string text = "\xFF\xFE";
    for (const char character : ascii)
        text += {character, '\0'};
    return text;
}

// Lines of the reports that a look at a file gives, without the file's path.
std::string reportOf(const std::string& bytes) {
    const std::string path = setRegistryFile(kRoot, bytes);
    kor::test::DebuggerOutput output;
    query("K", "v");
    query("K", "v");
    std::string text = output.take();
    for (std::size_t at = text.find(path); at != text.npos; at = text.find(path))
        text.erase(at, path.size() + 1);
    return text;
}

// What a key's value "v" becomes by a line, or by several, of a file that nothing is wrong with.
std::string valueBy(const std::string& lines, const std::string& header = kVersion5, const char* name = "v") {
    const std::string file = header + "[HKEY_CURRENT_USER\\K]\r\n" + lines;
    EXPECT_EQ(reportOf(file), "") << file;
    return query("K", name);
}

// What is reported of a line, or of several, in front of a sound value, which must be read all the same.
std::string reportBy(const std::string& lines) {
    const std::string start = kVersion5 + "[HKEY_CURRENT_USER\\K]\r\n"s;  // three lines
    std::string report = reportOf(start + lines + "[HKEY_CURRENT_USER\\K]\r\n\"v\"=\"kept\"\r\n");
    EXPECT_EQ(query("K", "v"), "1:kept\0"s) << lines.substr(0, 200);
    EXPECT_LE(std::count(report.begin(), report.end(), '\n'), 1) << report;
    return report.substr(0, 21);
}

}  // namespace

TEST(RegistryText, TellsKeysAndValues) {
    EXPECT_EQ(valueBy("@=\"d\"\r\n", kVersion5, ""), "1:d\0"s);
    EXPECT_EQ(valueBy("\"V\"=\"a\\\\b \\\"c\\\"\"\r\n"), "1:a\\b \"c\"\0"s);
    EXPECT_EQ(valueBy(" \"v\" = \"x\" ; note\r\n"), "1:x\0"s);
    EXPECT_EQ(valueBy("\"v\"=\"1\"\r\n\"V\"=\"2\"\r\n"), "1:2\0"s);
    EXPECT_EQ(valueBy("\"a\\\"b\"=\"q\"", kVersion5, "A\"b"), "1:q\0"s);
    EXPECT_EQ(valueBy("\"v\"=dword:0000ff01\r\n"), "4:\x01\xFF\0\0"s);
    EXPECT_EQ(valueBy("\"v\"=hex:00,fF,\\\r\n  1,02\r\n"), "3:\0\xFF\x01\x02"s);
    EXPECT_EQ(valueBy("\"v\"=hex:\r\n"), "3:");
    EXPECT_EQ(valueBy("\"v\"=hex:01 ; not going on \\\r\n"), "3:\x01");
    EXPECT_EQ(valueBy("\"v\"=hex(b):01,00,00,00,00,00,00,00\r\n"), "11:\x01\0\0\0\0\0\0\0"s);
    EXPECT_EQ(valueBy("\"v\"=hex(ffff0012):01\r\n"), "4294901778:\x01");
    EXPECT_EQ(valueBy("\"v\"=\"1\"\r\n\"v\"=\"long\"\r\n\"v\"=-\r\n\"v\"=\"2\"\r\n"), "1:2\0"s);
    EXPECT_EQ(valueBy("\"v\"=hex(2):25,00,e9,00,00,00\r\n"), "2:%\xE9\0"s);
    EXPECT_EQ(valueBy("\"v\"=hex(2):25,e9,00\r\n", "REGEDIT4\r\n"), "2:%\xE9\0"s);
    EXPECT_EQ(valueBy("\"v\"=hex(7):41,00,00,00,ac,20,00,00,00,00\r\n"), "7:A\0\x80\0\0"s);
    EXPECT_EQ(valueBy("\"v\"=\"\xC3\xA9\"\r\n"), "1:\xE9\0"s);
    EXPECT_EQ(valueBy("\"v\"=\"\xE4\xB8\x80\"\r\n", "\xEF\xBB\xBF"s + kVersion5), "1:?\0"s);
    EXPECT_EQ(valueBy("\"v\"=\"\xE9\"\n", "REGEDIT4\n"), "1:\xE9\0"s);
    EXPECT_EQ(valueBy("\"v\"=\"1\"\r\n\"v\"=-\r\n"), "value 2");
    EXPECT_EQ(valueBy("\"v\"=-\r\n\"v\"=\"1\"\r\n"), "1:1\0"s);
    EXPECT_EQ(valueBy("\"v\"=\"1\"\r\n[-HKEY_CURRENT_USER\\k]\r\n\"v\"=\"2\"\r\n"), "key 2");
    EXPECT_EQ(valueBy("\"v\"=\"1\"\r\n[-HKEY_CURRENT_USER\\K]\r\n[HKEY_CURRENT_USER\\K]\r\n"), "value 2");
    EXPECT_EQ(valueBy("[-HKEY_CURRENT_USER\\K]\r\n[HKEY_CURRENT_USER\\k\\L]\r\n"), "value 2")
        << "made with L";
    setRegistryFile(kRoot, utf16(kVersion5 + "[HKEY_CURRENT_USER\\K]\r\n\"v\"=\"x\"\r\n"s));
    EXPECT_EQ(query("K", "v"), "1:x\0"s);
}

TEST(RegistryText, NamesTheLineOfWhatCannotBeReadAndReadsTheRest) {
    EXPECT_EQ(reportBy("\"a\"=\"C:\\dir\"\r\n"), "4: a backslash stands");
    EXPECT_EQ(reportBy("\"a\"=\"open\r\n"), "4: the closing quote ");
    EXPECT_EQ(reportBy("\"a\"=\"b\" c\r\n"), "4: something stands b");
    EXPECT_EQ(reportBy("\"a\" \"b\"\r\n"), "4: the equals sign is");
    EXPECT_EQ(reportBy("\"a\"=dword:123456789\r\n"), "4: the number has not");
    EXPECT_EQ(reportBy("\"a\"=qword:1\r\n"), "4: the value is of no");
    EXPECT_EQ(reportBy("\"a\"=hex(:1\r\n"), "4: the value is of no");
    EXPECT_EQ(reportBy("\"a\"=hex:01,\\\r\n02,xx\r\n"), "5: the value's bytes ");
    EXPECT_EQ(reportBy("\"a\"=hex:zz,\\\r\n02,\\\r\n03\r\n"), "4: the value's bytes ");
    EXPECT_EQ(reportBy("\"a\"=hex:01 02\r\n"), "4: a comma is missing");
    EXPECT_EQ(reportBy("\"a\"=hex:01,\\\r\n"), "4: the value's bytes ") << "they do not end";
    EXPECT_EQ(reportBy("just text\r\n"), "4: the line is neithe");
    EXPECT_EQ(reportBy("\"a\"=\"\xFF\"\r\n"), "4: the line is no val");
    EXPECT_EQ(reportBy("\"a\"=\"" + std::string(1 << 20, 'x') + "\"\r\n"), "4: the line is too lo");
}

TEST(RegistryText, ValuesOfAKeyThatCannotBeReadGoNowhere) {
    for (const std::string key : {"[HKEY_CURRENT_USER\\X", "[HKEY_LOCAL_MACHINE\\K]", "[K]", "[]",
                                  "[-HKEY_CURRENT_USER]", "[HKEY_CURRENT_USER\\\xFF]"}) {
        const std::string report =
            reportOf(kVersion5 + "[HKEY_CURRENT_USER\\K]\r\n"s + key + "\r\n\"v\"=\"x\"\r\n");
        EXPECT_EQ(report.substr(0, 3), "4: ") << key;
        EXPECT_EQ(query("K", "v"), "value 2") << key;
    }
    EXPECT_EQ(reportOf(kVersion5 + "\"v\"=\"x\"\r\n"s).substr(0, 3), "3: ");
    std::string deep = "[HKEY_CURRENT_USER";
    for (int depth = 0; depth < 513; ++depth)
        deep += "\\d";
    EXPECT_EQ(reportOf(kVersion5 + deep + "]\r\n"), "3: the key lies too deep\n");
}

TEST(RegistryText, WhatIsNoRegistryFileHasNoKeys) {
    for (const std::string& bytes : {"[HKEY_CURRENT_USER\\K]\r\n\"v\"=\"x\"\r\n"s, std::string(3 << 20, '\0'),
                                     "\xFE\xFF\0W"s, std::string(100, '\xFF'), "REGEDIT5\r\n"s}) {
        EXPECT_NE(reportOf(bytes).find(':'), std::string::npos);
        EXPECT_EQ(query("K", "v"), "key 2");
    }
}

TEST(RegistryText, AChangedFileIsReadAgain) {
    const std::string start = kVersion5 + "[HKEY_CURRENT_USER\\K]\r\n"s;
    const std::string path = setRegistryFile(kRoot, start + "\"v\"=\"1\"\r\n");
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "K", 0, KEY_READ, &key), 0);
    setRegistryFile(kRoot, start + "\"v\"=\"2\"\r\n");
    EXPECT_EQ(query("K", "v"), "1:2\0"s) << "changed at once, with the same size";
    char text[2];
    DWORD size = sizeof text;
    EXPECT_EQ(RegQueryValueExA(key, "v", nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size), 0);
    EXPECT_STREQ(text, "2") << "through an open key too";
    ASSERT_EQ(unlink(path.c_str()), 0);
    EXPECT_EQ(RegQueryValueExA(key, "v", nullptr, nullptr, nullptr, &size), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCloseKey(key), 0);
    ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
    EXPECT_EQ(query("K", "v"), "key 2") << "a folder in its place";
    ASSERT_EQ(rmdir(path.c_str()), 0);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(query("K", "v"), "key 2") << "nor is a pipe waited for";
    ASSERT_EQ(unlink(path.c_str()), 0);
}

TEST(RegistryText, IsOnlyRead) {
    setRegistryFile(kRoot, kVersion5 + "[HKEY_CURRENT_USER\\K]\r\n"s);
    HKEY key = nullptr;
    for (const REGSAM access : {KEY_WRITE, KEY_ALL_ACCESS, KEY_SET_VALUE, GENERIC_WRITE, DELETE})
        EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "K", 0, access, &key), ERROR_ACCESS_DENIED) << access;
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "K", 0, MAXIMUM_ALLOWED, &key), 0);
    EXPECT_EQ(RegCloseKey(key), 0);
}

TEST(RegistryText, KeepsToAMemoryThatTheFileAccountsFor) {
    std::string file = kVersion5;
    file.reserve(9 << 20);
    for (int line = 0; file.size() < (8u << 20); ++line) {
        file += "[HKEY_CURRENT_USER\\" + std::to_string(line);
        for (int depth = 0; depth < 500; ++depth)
            file += "\\a";
        file += "]\n";
    }
    const std::string report = reportOf(file);
    EXPECT_NE(report.find("more keys and values than"), std::string::npos);
    EXPECT_NE(query("0\\a\\a", ""), "key 2") << "what came first is there";
    file = kVersion5 + "[HKEY_CURRENT_USER\\K]\n"s;
    for (int line = 1'000'000; file.size() < (8u << 20); ++line)
        file += '"' + std::to_string(line) + "\"=\"\"\n";
    EXPECT_EQ(reportOf(file + "@=\"last\"\n"), "") << "short lines, all sound";
    EXPECT_EQ(query("K", "1500000") + query("K", ""), "1:\0"s + "1:last\0"s);
    setRegistryFile(kRoot, "");
}
