#define _GNU_SOURCE
#include "mock_script.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

struct Word {
  const char* key;
  struct MockText value;
};

static bool IsKey(const struct Word* word, const char* key) { return strcmp(word->key, key) == 0; }

static bool IsYes(const struct Word* word) { return word->value.bytes[0] == 'y'; }

static unsigned long NumberOf(const struct Word* word) {
  return strtoul((const char*)word->value.bytes, NULL, 0);
}

static void CopyName(char* name, size_t size, const struct Word* word) {
  strncpy(name, (const char*)word->value.bytes, size - 1);
}

static struct MockText TextOf(const char* text) {
  struct MockText value = {strlen(text), {0}};
  memcpy(value.bytes, text, value.size);
  return value;
}

static struct MockText Decode(const char* text) {
  struct MockText value = {0, {0}};
  for (; *text && value.size < kMostText - 1; ++text) {
    unsigned char byte = (unsigned char)*text;
    if (byte == '%' && text[1] && text[2]) {
      const char digits[] = {text[1], text[2], 0};
      byte = (unsigned char)strtoul(digits, NULL, 16);
      text += 2;
    }
    value.bytes[value.size++] = byte;
  }
  return value;
}

static void ReadModuleWord(struct MockScript* script, const struct Word* word) {
  if (IsKey(word, "locks")) script->locks = IsYes(word);
  if (IsKey(word, "forks")) script->noticesForks = word->value.bytes[0] != 'u';
  if (IsKey(word, "micros")) script->micros = NumberOf(word);
  if (IsKey(word, "hides")) script->hides = NumberOf(word);
  if (IsKey(word, "extra")) script->extra = NumberOf(word);
  if (IsKey(word, "manufacturer")) script->manufacturer = word->value;
}

static void ReadSlotText(struct MockSlot* slot, const struct Word* word) {
  if (IsKey(word, "serial")) slot->serial = word->value;
  if (IsKey(word, "label")) slot->label = word->value;
  if (IsKey(word, "manufacturer")) slot->manufacturer = word->value;
  if (IsKey(word, "model")) slot->model = word->value;
}

static void ReadSlotFlag(struct MockSlot* slot, const struct Word* word) {
  if (IsKey(word, "present")) slot->isPresent = IsYes(word);
  if (IsKey(word, "rng")) slot->hasRng = IsYes(word);
  if (IsKey(word, "pin")) slot->requiresPin = IsYes(word);
  if (IsKey(word, "initialized")) slot->isInitialized = IsYes(word);
  if (IsKey(word, "protected")) slot->isProtected = IsYes(word);
  if (IsKey(word, "known")) slot->isKnown = IsYes(word);
  if (IsKey(word, "same")) slot->isSame = IsYes(word);
  if (IsKey(word, "leaves")) slot->leavesHalf = strcmp((const char*)word->value.bytes, "half") == 0;
  if (IsKey(word, "zeros")) slot->zeroesHalf = strcmp((const char*)word->value.bytes, "half") == 0;
}

static void ReadSlotNumber(struct MockSlot* slot, const struct Word* word) {
  if (IsKey(word, "id")) slot->id = NumberOf(word);
  if (IsKey(word, "sessions")) slot->sessions = NumberOf(word);
  if (IsKey(word, "largest")) slot->largest = NumberOf(word);
  if (IsKey(word, "refusal")) slot->refusal = NumberOf(word);
  if (IsKey(word, "life")) slot->life = NumberOf(word);
  if (IsKey(word, "bytes")) slot->lastBytes = NumberOf(word);
}

static void ReadSlotWord(struct MockScript* script, const struct Word* word) {
  struct MockSlot* const slot = &script->slots[script->slotCount - 1];
  ReadSlotText(slot, word);
  ReadSlotFlag(slot, word);
  ReadSlotNumber(slot, word);
}

static void ReadFaultWord(struct MockScript* script, const struct Word* word) {
  struct MockFault* const fault = &script->fault;
  if (IsKey(word, "number")) fault->number = NumberOf(word);
  if (IsKey(word, "function")) CopyName(fault->function, sizeof fault->function, word);
  if (IsKey(word, "call")) fault->call = NumberOf(word);
  if (IsKey(word, "times")) fault->times = NumberOf(word);
  if (IsKey(word, "result")) fault->result = NumberOf(word);
}

static void ReadHangWord(struct MockScript* script, const struct Word* word) {
  if (IsKey(word, "function")) CopyName(script->hangs, sizeof script->hangs, word);
  if (IsKey(word, "until")) CopyName(script->until, sizeof script->until, word);
}

static void AddSlot(struct MockScript* script) {
  if (script->slotCount == kMostSlots) abort();
  script->slots[script->slotCount++] = (struct MockSlot){
      .serial = TextOf("A1"),
      .label = TextOf("Token"),
      .manufacturer = TextOf("Mock"),
      .model = TextOf("M1"),
      .isPresent = true,
      .hasRng = true,
      .isInitialized = true,
      .isKnown = true,
      .sessions = 64,
      .largest = 1 << 30,
      .refusal = CKR_DATA_LEN_RANGE,
  };
}

static void ReadLine(struct MockScript* script, char* line) {
  char* rest = NULL;
  const char* const kind = strtok_r(line, " ", &rest);
  if (!kind) return;
  if (strcmp(kind, "slot") == 0) AddSlot(script);
  for (char* part; (part = strtok_r(NULL, " ", &rest));) {
    char* const sign = strchr(part, '=');
    if (!sign) abort();
    *sign = 0;
    const struct Word word = {part, Decode(sign + 1)};
    if (strcmp(kind, "module") == 0) ReadModuleWord(script, &word);
    if (strcmp(kind, "slot") == 0) ReadSlotWord(script, &word);
    if (strcmp(kind, "fault") == 0) ReadFaultWord(script, &word);
    if (strcmp(kind, "hang") == 0) ReadHangWord(script, &word);
  }
}

static void ReadText(char* text, size_t size) {
  const char* const path = getenv("MOCK_TOKENS");
  const int file = path ? open(path, O_RDONLY | O_CLOEXEC) : -1;
  if (file < 0) return;
  ssize_t count = 0;
  size_t end = 0;
  while (end < size - 1 && (count = read(file, text + end, size - 1 - end)) > 0)
    end += (size_t)count;
  close(file);
}

void ReadMockScript(struct MockScript* script) {
  char text[4096] = "";
  ReadText(text, sizeof text);
  *script =
      (struct MockScript){.locks = true, .noticesForks = true, .manufacturer = TextOf("Mock")};
  script->fault.times = 1;
  char* rest = NULL;
  for (char* line = strtok_r(text, "\n", &rest); line; line = strtok_r(NULL, "\n", &rest)) {
    ReadLine(script, line);
  }
}
