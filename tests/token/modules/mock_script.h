/* The script of the mock module, read from the file that MOCK_TOKENS names. Its lines are words,
   "key=value", with %XX for any byte:

     module locks=no forks=unnoticed micros=500 hides=1 extra=1
     slot id=0 serial=A1 label=Token%20A manufacturer=Mock model=M1 present=no rng=no pin=yes initialized=no
          protected=yes known=no sessions=3 largest=64 refusal=0x21 zeros=half leaves=half same=yes life=2
          bytes=1000
     fault number=1 function=C_OpenSession call=2 times=1 result=0x30
     hang function=C_GenerateRandom until=/path

   A slot is one line. Only its id has no default. */
#ifndef TESTS_TOKEN_MODULES_MOCK_SCRIPT_H
#define TESTS_TOKEN_MODULES_MOCK_SCRIPT_H

#include <p11-kit/pkcs11.h>
#include <stdbool.h>

enum { kMostSlots = 8, kMostText = 80, kMostPath = 200 };

struct MockText {
  size_t size;
  unsigned char bytes[kMostText];
};

struct MockSlot {
  CK_SLOT_ID id;
  struct MockText serial, label, manufacturer, model;
  bool isPresent, hasRng, requiresPin, isInitialized, isProtected;
  bool isKnown;            /* otherwise the module does not know what was inserted */
  unsigned long sessions;  /* how many may be open */
  unsigned long largest;   /* piece of random bytes that it gives */
  CK_RV refusal;           /* its answer to larger ones */
  bool zeroesHalf;         /* of each piece, and reports success */
  bool leavesHalf;         /* of each piece as it was, and reports success */
  bool isSame;             /* the same bytes in each piece */
  unsigned long life;      /* another number: the token was taken out and inserted again */
  unsigned long lastBytes; /* after so many in this life the token is gone; 0: never */
};

struct MockFault {
  unsigned long number; /* another number: calls are counted from 1 again */
  char function[40];    /* or "*" */
  unsigned long call, times;
  CK_RV result;
};

struct MockScript {
  bool locks;           /* whether several threads may call */
  bool noticesForks;    /* so that a copy of the process must initialize it */
  unsigned long micros; /* that a piece of random bytes takes */
  unsigned long hides;  /* how many times the number of slots is reported one too small */
  unsigned long
      extra; /* how many slots too many are reported when a caller asks for their number */
  struct MockText manufacturer;
  struct MockSlot slots[kMostSlots];
  size_t slotCount;
  struct MockFault fault;
  char hangs[40];        /* the function that does not return */
  char until[kMostPath]; /* before this file exists */
};

void ReadMockScript(struct MockScript* script);

#endif
