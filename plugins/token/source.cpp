#include "source.h"

#include "pkcs11/session.h"

#include <algorithm>
#include <cstring>

// A draw from the token with the serial number, or from any token if that is "".
struct Source::Request {
  Request(unsigned char* buffer, std::size_t count, const std::string& wanted, Source& source,
          Turn& right)
      : bytes(buffer), size(count), serial(wanted), turn(right), openingsBefore(source.openings) {}

  bool IsFor(const Token& token) const {
    return token.IsCandidate() && (serial.empty() || serial == token.serial);
  }

  unsigned char* bytes;
  std::size_t size;
  const std::string& serial;
  Turn& turn;
  std::uint64_t openingsBefore;
  bool isRepeated = false;
  Token found = {};  // by a search, if one was made
};

namespace {

// Two equal draws are not a coincidence: the token is broken.
template <typename Draw>
bool LooksRandom(const Draw& draw) {
  unsigned char first[32];
  unsigned char second[32];
  RngDrawCheck check;
  return check.Run(first, sizeof first, [&] { return draw(first, sizeof first); }) &&
         check.Run(second, sizeof second, [&] { return draw(second, sizeof second); }) &&
         std::memcmp(first, second, sizeof first) != 0;
}

}  // namespace

Source::Source(Modules& all, const TokenUri& which, const Source* original)
    : modules(all),
      uri(which),
      turns(!all.AreThreadSafe()),
      openings(original ? 0 : 1),
      selected(original ? original->selected.load() : &selections.front()) {}

bool Source::Draw(void* buffer, std::size_t size) {
  Token found;
  const bool isDrawn = check.Run(buffer, size, [&] {
    return size == 0 ||
           DrawUnchecked(static_cast<unsigned char*>(buffer), size, Selected(), found) == CKR_OK;
  });
  if (isDrawn) Remember(found);
  return isDrawn;
}

bool Source::Test() { return Test(Selected()); }

bool Source::Test(const std::string& serial) {
  const std::uint64_t cancelsBefore = turns.Cancels();
  Token found;
  const bool isGood = LooksRandom([&](unsigned char* bytes, std::size_t size) {
    return DrawUnchecked(bytes, size, serial, found) == CKR_OK;
  });
  if (isGood) Remember(found);
  const bool mayUseAnother = serial.empty() && turns.Cancels() == cancelsBefore;
  const bool hasPassed = isGood || (mayUseAnother && UseGoodToken());
  if (hasPassed) check.Reset();
  return hasPassed;
}

// The first token may succeed with bytes that are not random, and another one be in order.
bool Source::UseGoodToken() {
  const std::vector<Finding> all = Examine().all;
  const auto good =
      std::find_if(all.begin(), all.end(), [](const Finding& finding) { return finding.isRandom; });
  if (good != all.end()) Remember(good->token);
  return good != all.end();
}

bool Source::Select(const std::string& serial) {
  if (!serial.empty() && (!IsStorable(serial) || !Test(serial))) return false;
  const std::lock_guard<std::mutex> guard(lock);
  for (const std::string& earlier : selections) {
    if (earlier != serial) continue;
    selected = &earlier;
    return true;
  }
  selections.push_front(serial);
  selected = &selections.front();
  return true;
}

Token Source::Used() {
  const std::lock_guard<std::mutex> guard(lock);
  return used;
}

Source::Findings Source::Examine() {
  const std::string any;
  Turn turn(turns, turns.Cancels());
  Request request(nullptr, 0, any, *this, turn);
  if (!turn.IsMine() || (openings == 0 && !OpenAgain(request))) return {};
  Survey survey = SurveyTokens(modules, uri);
  if (survey.needsOpen) {
    if (!OpenAgain(request)) return {};
    survey = SurveyTokens(modules, uri);
  }
  Findings findings = {{}, modules.Problems(), !modules.All().empty()};
  findings.problems.insert(findings.problems.end(), survey.problems.begin(), survey.problems.end());
  for (const Token& token : survey.tokens) findings.all.push_back(Examine(token, turn));
  return findings;
}

Source::Finding Source::Examine(const Token& token, Turn& turn) {
  Finding finding = {token};
  if (!token.IsCandidate()) return finding;
  finding.isRandom = LooksRandom([&](unsigned char* bytes, std::size_t size) {
    Request request(bytes, size, token.serial, *this, turn);
    finding.drawn = DrawFrom(token, request);
    return finding.drawn == CKR_OK;
  });
  return finding;
}

// Other code in the process may have finalized the module. Then initialize it and look for the token again, once.
CK_RV Source::DrawUnchecked(unsigned char* bytes, std::size_t size, const std::string& serial,
                            Token& found) {
  Turn turn(turns, turns.Cancels());
  Request request(bytes, size, serial, *this, turn);
  if (!turn.IsMine() || (openings == 0 && !OpenAgain(request))) return CKR_CANCEL;
  CK_RV result = DrawFromUsed(request);
  if (result == CKR_CRYPTOKI_NOT_INITIALIZED && OpenAgain(request)) {
    request.isRepeated = true;
    result = DrawFromUsed(request);
  }
  while (result == CKR_SESSION_COUNT && turn.WaitForAnother()) result = DrawFromUsed(request);
  if (request.found.slot.module) found = request.found;
  return result;
}

// As long as the token of the last draw is in its slot, no search is needed.
CK_RV Source::DrawFromUsed(Request& request) {
  const Token before = Used();
  Token now;
  if (before.slot.module && ReadToken(before.slot, uri, now) == CKR_OK &&
      now.serial == before.serial && request.IsFor(now)) {
    const CK_RV result = DrawFrom(now, request);
    if (IsEnd(result, request)) return result;
  }
  return DrawFromFirst(request);
}

CK_RV Source::DrawFromFirst(Request& request) {
  const Survey survey = SurveyTokens(modules, uri);
  if (survey.needsOpen && !request.isRepeated) return CKR_CRYPTOKI_NOT_INITIALIZED;
  bool isAnyFull = false;
  CK_RV result = CKR_TOKEN_NOT_PRESENT;
  for (const Token& token : survey.tokens) {
    if (!request.IsFor(token)) continue;
    result = DrawFrom(token, request);
    if (result == CKR_OK) request.found = token;
    if (IsEnd(result, request)) return result;
    isAnyFull = isAnyFull || result == CKR_SESSION_COUNT;
  }
  return isAnyFull ? CKR_SESSION_COUNT : result;
}

// Whether to try no other token.
bool Source::IsEnd(CK_RV result, const Request& request) {
  return result == CKR_OK || result == CKR_CRYPTOKI_NOT_INITIALIZED || request.turn.IsCancelled();
}

void Source::Remember(const Token& token) {
  if (!token.slot.module) return;
  const std::lock_guard<std::mutex> guard(lock);
  used = token;
}

CK_RV Source::DrawFrom(const Token& token, Request& request) {
  Session session(token.slot.module->Functions(), token.slot.id);
  if (session.Result() != CKR_OK) return session.Result();
  // Another token may have been inserted just before the session was opened.
  Token opened;
  const CK_RV result = ReadToken(token.slot, uri, opened);
  if (result != CKR_OK) return result;
  if (opened.serial != token.serial || !opened.IsCandidate()) return CKR_DEVICE_REMOVED;
  return session.Draw(request.bytes, request.size,
                      [&request] { return !request.turn.IsCancelled(); });
}

// Several draws may notice at once that a module is not initialized. One of them initializes all modules.
bool Source::OpenAgain(Request& request) {
  return request.turn.RunExclusively([this, &request] {
    if (openings != request.openingsBefore) return;
    modules.Reopen();
    ++openings;
  });
}
