#include "benchmarks/bare/blocks.h"

#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

enum { kBlock = 4096, kWhole = 4 << 20, kShort = 512 };

static char whole[kWhole];

// Reads the file into `whole` and terminates it. Returns its length, -1 when it cannot be read.
static ssize_t ReadWhole(const char* path) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return -1;
  ssize_t length = 0;
  for (ssize_t got = 1; got > 0 && length < kWhole - kBlock; length += got) {
    got = read(file, whole + length, kBlock);
    if (got < 0) break;
  }
  close(file);
  whole[length] = '\0';
  return length;
}

static const char* FindLine(const char* at, const char* end, const char* prefix) {
  const size_t length = strlen(prefix);
  while (at < end && strncmp(at, prefix, length) != 0) {
    const char* const newline = memchr(at, '\n', (size_t)(end - at));
    at = newline ? newline + 1 : end;
  }
  return at;
}

static const char* FindEntry(const char* end, const char* section, const char* key) {
  char header[kShort];
  snprintf(header, sizeof header, "[%s]\n", section);
  return FindLine(FindLine(whole, end, header), end, key);
}

bool ReadValueInBlocks(const char* path, const char* section, const char* key, char* buffer,
                       size_t size) {
  const ssize_t length = ReadWhole(path);
  if (length < 0) return false;
  const char* const end = whole + length;
  const char* const entry = FindEntry(end, section, key);
  const char* const equals = memchr(entry, '=', (size_t)(end - entry));
  if (!equals) return false;
  const size_t valueLength = strcspn(equals + 1, "\n");
  if (valueLength >= size) return false;
  memcpy(buffer, equals + 1, valueLength);
  buffer[valueLength] = '\0';
  return true;
}

static bool WriteAll(int file, const char* text, size_t length) {
  while (length > 0) {
    const ssize_t written = write(file, text, length < kBlock ? length : kBlock);
    if (written <= 0) return false;
    text += written;
    length -= (size_t)written;
  }
  return true;
}

bool WriteValueInBlocks(const char* path, const char* section, const char* key, const char* value) {
  const ssize_t length = ReadWhole(path);
  if (length < 0) return false;
  const char* const end = whole + length;
  const char* const entry = FindEntry(end, section, key);
  if (entry == end) return false;
  const char* const rest = entry + strcspn(entry, "\n") + 1;
  char temporaryPath[kShort];
  char line[kShort];
  snprintf(temporaryPath, sizeof temporaryPath, "%s.tmp", path);
  const int lineLength = snprintf(line, sizeof line, "%s=%s\n", key, value);
  const int file = open(temporaryPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) return false;
  const bool isWritten = WriteAll(file, whole, (size_t)(entry - whole)) &&
                         WriteAll(file, line, (size_t)lineLength) &&
                         WriteAll(file, rest, (size_t)(end - rest));
  close(file);
  unlink(path);
  return isWritten && rename(temporaryPath, path) == 0;
}
