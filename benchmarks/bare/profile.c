#include "benchmarks/bare/profile.h"

#include <ctype.h>
#include <stdio.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

enum { kLine = 512, kReadLimit = 511, kPath = 512 };

static bool FindLine(FILE* file, const char* prefix, char* line) {
  const size_t length = strlen(prefix);
  while (fgets(line, kReadLimit, file)) {
    if (strncasecmp(line, prefix, length) == 0) return true;
  }
  return false;
}

static void Trim(char* text) {
  char* begin = text;
  while (isspace((unsigned char)*begin)) ++begin;
  char* end = begin + strlen(begin);
  while (end != begin && isspace((unsigned char)end[-1])) --end;
  *end = '\0';
  memmove(text, begin, (size_t)(end - begin) + 1);
}

bool ReadValue(const char* path, const char* section, const char* key, char* buffer, size_t size) {
  _Alignas(64) char line[kLine];  // the speed of string functions depends on it
  _Alignas(64) char header[kLine];
  FILE* const file = fopen(path, "r");
  if (!file) return false;
  snprintf(header, sizeof header, "[%s]", section);
  const bool isFound = FindLine(file, header, line) && FindLine(file, key, line);
  fclose(file);
  char* const equals = isFound ? strrchr(line, '=') : NULL;
  if (!equals) return false;
  Trim(equals + 1);
  strncpy(buffer, equals + 1, size - 1);
  buffer[size - 1] = '\0';
  return true;
}

static inline bool ReadLine(FILE* from, char* line) {
  size_t length = 0;
  for (int c = getc(from); c != EOF; c = getc(from)) {
    if (c == '\r') continue;
    if (c == '\n') {
      line[length] = '\0';
      return true;
    }
    if (length == kLine - 1) return false;
    line[length++] = (char)c;
  }
  return false;
}

static bool CopyThroughHeader(FILE* from, FILE* to, const char* header, char* line) {
  while (ReadLine(from, line)) {
    fprintf(to, "%s\n", line);
    if (strcmp(line, header) == 0) return true;
  }
  fprintf(to, "\n%s\n", header);
  return false;
}

static void CopyAndPlace(FILE* from, FILE* to, const char* header, const char* key,
                         const char* value) {
  _Alignas(64) char line[kLine];  // the speed of string functions depends on it
  const size_t keyLength = strlen(key);
  bool isInside = CopyThroughHeader(from, to, header, line);
  while (isInside && ReadLine(from, line)) {
    if (!*line || strncmp(line, key, keyLength) == 0) break;
    fprintf(to, "%s\n", line);
  }
  fprintf(to, "%s=%s\n", key, value);
  if (isInside && !*line) fputs("\n", to);
  while (isInside && ReadLine(from, line)) fprintf(to, "%s\n", line);
}

bool WriteValue(const char* path, const char* section, const char* key, const char* value) {
  char temporaryPath[kPath];
  _Alignas(64) char header[kLine];
  strcat(strcpy(temporaryPath, path), ".tmp");
  snprintf(header, sizeof header, "[%s]", section);
  FILE* const from = fopen(path, "r");
  if (!from) return false;
  FILE* const to = fopen(temporaryPath, "w");
  if (to) {
    CopyAndPlace(from, to, header, key, value);
    fclose(to);
  }
  fclose(from);
  if (!to) return false;
  unlink(path);
  rename(temporaryPath, path);
  return true;
}
