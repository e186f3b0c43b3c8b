// Draws 32 random bytes from the default generator and prints them in hexadecimal.

#include <stdio.h>

#include <rngaggregator/aggregator_c.h>

// The default is the user's choice: no other generator replaces it when it is not usable.
static IRngProvider* FindDefault(void) {
  DefaultRngInfo choice;
  if (!GetDefaultRng(&choice, 0)) {
    fputs("No default generator is configured. Choose one: rngctl default set KIND\n", stderr);
    return NULL;
  }
  IRngProvider* const rng = GetRng(choice.type);
  if (!rng) {
    fprintf(stderr, "The generator \"%s\" is not usable. To find out why: rngctl doctor %s\n",
            choice.type, choice.type);
    return NULL;
  }
  if (!rng->operations->SelectDevice(rng, choice.hardwareId)) {
    fprintf(stderr, "The generator \"%s\" cannot use the device \"%s\" now.\n", choice.type,
            choice.hardwareId);
    return NULL;
  }
  return rng;
}

static bool Draw(unsigned char* bytes, size_t size) {
  IRngProvider* const rng = FindDefault();
  if (!rng) return false;
  if (rng->operations->Generate(rng, bytes, size)) return true;
  fputs("The draw failed.\n", stderr);
  return false;
}

static bool Print(const unsigned char* bytes, size_t size) {
  for (size_t i = 0; i < size; ++i) printf("%02x", bytes[i]);
  putchar('\n');
  if (fflush(stdout) == 0 && !ferror(stdout)) return true;
  perror("The bytes cannot be printed");
  return false;
}

int main(void) {
  unsigned char bytes[32];
  Initialize(GetDefaultSettings());
  const bool isDrawn = Draw(bytes, sizeof bytes);
  ShutDown();
  return isDrawn && Print(bytes, sizeof bytes) ? 0 : 1;
}
