#ifndef TOOLS_RNGCTL_COMMANDS_H
#define TOOLS_RNGCTL_COMMANDS_H

#include "encoding.h"

#include <cstdint>
#include <string>

/// Each command prints its result on standard output and throws a `Refusal` when it cannot be had.

void RunList();

struct ReadRequest {
  std::string name;  ///< empty: the configured default
  std::uint64_t size = 0;
  Encoding encoding = Encoding::kHex;
  std::string file;  ///< empty: standard output
};
void RunRead(const ReadRequest& request);

void RunDefault(std::uint32_t mask);

void RunDefaultSet(const std::string& name, const std::string& hardwareId);

struct DoctorRequest {
  std::string kind;  ///< empty: all
  bool asJson = false;
  unsigned timeout = 10;  ///< seconds for each plug-in
};
void RunDoctor(const DoctorRequest& request);

struct DoctorChildRequest {
  std::string subject;        ///< a kind, or what else is examined
  std::string file;           ///< of a kind: what is opened
  bool isForBinding = false;  ///< of a kind: only what is missing
};
/// The part of the doctor that may not survive.
void RunDoctorChild(const DoctorChildRequest& request);

struct CheckRequest {
  std::string plugin;   ///< the path of the library
  std::string factory;  ///< empty: the catalogue's
  bool asJson = false;
  unsigned timeout = 10;  ///< seconds for each check
};
void RunCheck(const CheckRequest& request);

struct CheckChildRequest {
  std::string what;     ///< which check, and what is known so far; JSON
  std::string plugin;   ///< apart from that, because JSON holds UTF-8 alone
  std::string factory;  ///< likewise
};
/// In a child: makes the one check that `request` asks for, sends what it finds, and ends the process.
[[noreturn]] void RunCheckChild(const CheckChildRequest& request);

#endif
