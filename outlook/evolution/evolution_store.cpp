#include "outlook/evolution/evolution_store.h"

#include <algorithm>
#include <utility>

#include "outlook/evolution/fingerprint.h"
#include "outlook/vcard/card_file.h"
#include "outlook/vcard/card_text.h"
#include "outlook/vcard/vcard_contact.h"
#include "text/language.h"

namespace vlout::outlook::evolution {
namespace {

// A server has dropped the key of a contact: the contact gets it back here, and stores it with its
// next save.
std::string withKey(const std::string& text, const std::string& vlid) {
  const std::size_t end = text.rfind("END:VCARD");
  if (end == std::string::npos) return text;
  return text.substr(0, end) + "X-VLID:" + vlid + "\r\n" + text.substr(end);
}

// A kept contact, with the service's remark about what the server has now, taken from `current`, if
// there is one.
std::string withRemarkOf(const std::string& current, const std::string& kept) {
  constexpr const char* kRemark = "X-EVOLUTION-WEBDAV-ETAG";
  vcard::CardText card(kept);
  while (const auto line = card.firstNamed(kRemark)) card.remove(*line);
  if (!current.empty()) {
    const vcard::CardText now(current);
    if (const auto line = now.firstNamed(kRemark)) card.append(now.property(*line));
  }
  return card.write();
}

}  // namespace

bool EvolutionStore::connect() {
  settings_.desktop->tryAgain();
  hasLooked_ = false;
  if (book_) return true;
  try {
    book_ = settings_.desktop->open(settings_.book);
  } catch (const ContactStoreError& error) {
    connectFailure_ = error.what();
    return false;
  }
  connectFailure_.clear();
  return true;
}

void EvolutionStore::openContactsFolder(const std::function<void()>& afterEach) {
  static_cast<void>(afterEach);  // the calls let windows live
  look();
  hasLooked_ = false;
}

void EvolutionStore::look() {
  if (hasLooked_) return;
  if (!book_)
    throw ContactStoreError(
        text::say("주소록이 열려 있지 않습니다", "the address book is not open"));
  const std::string& uid = book_->info().uid;
  std::vector<StoredCard> cards = book_->list([&] {
    times_.emplace(settings_.componentFolder, uid, !isPreview());
    if (!isPreview()) mirror_.emplace(mirrorOf(settings_.componentFolder, uid));
  });
  // A book lists its contacts in any order, but positions must be the same in every run.
  std::sort(cards.begin(), cards.end(),
            [](const StoredCard& a, const StoredCard& b) { return a.uid < b.uid; });
  items_.clear();
  postponed_.clear();
  postponedSize_ = 0;
  failures_.clear();
  notices_.clear();
  items_.reserve(cards.size());
  for (StoredCard& card : cards) add(std::move(card));
  times_->flush();
  if (mirror_) mirror_->dropOthers();
  if (settings_.watcher) settings_.watcher->found(items_.size());
  hasLooked_ = true;
}

// Writes down what the history sees of a contact.
void EvolutionStore::reflect(const Item& item) {
  if (mirror_->has(item.uid, item.time)) return;
  mirror_->keep(item.uid, withPictures(item.text), item.time);
}

void EvolutionStore::add(StoredCard card) {
  auto known = card.uid.empty() ? std::nullopt : times_->found(card.uid, card.text);
  if (!known) {
    notices_.push_back(
        text::say("%1: 읽을 수 없는 연락처입니다", "%1: unreadable contact", {card.uid}));
    return;
  }
  Item item{.uid = std::move(card.uid),
            .text = std::move(card.text),
            .isGroup = known->isGroup,
            .vlid = std::move(known->vlid),
            .time = known->time};
  if (mirror_) reflect(item);
  items_.push_back(std::move(item));
}

std::string EvolutionStore::keyWhenOpened(std::size_t index) const {
  const Item& item = at(index);
  return item.isGroup ? std::string() : item.vlid.value_or("");
}

PersonName EvolutionStore::nameWhenOpened(std::size_t index) const {
  const Item& item = at(index);
  const bool isKeyed = item.vlid && !item.vlid->empty();
  return item.isGroup || isKeyed ? PersonName() : vcard::nameOf(vcard::CardText(item.text));
}

std::unique_ptr<Contact> EvolutionStore::item(std::size_t index) {
  if (index < 1 || index > items_.size()) {
    throw ContactStoreError(
        text::say("연락처가 없습니다 #%1", "no contact #%1", {std::to_string(index)}));
  }
  if (isPreview()) {
    return std::make_unique<vcard::PreviewContact>(*this, index, settings_.onlyPreview);
  }
  return std::make_unique<vcard::VCardContact>(*this, index);
}

std::unique_ptr<Contact> EvolutionStore::create() {
  return std::make_unique<vcard::VCardContact>(*this, std::nullopt);
}

std::string EvolutionStore::chooseCategories() {
  throw ContactStoreError(
      text::say("데스크톱 주소록에는 범주 선택 창이 없습니다",
                "Address books of the desktop have no dialog to choose categories"));
}

// A save is permanent once the service has answered.
void EvolutionStore::flush(const Lose& lose) {
  static_cast<void>(lose);
  if (times_) times_->flush();
}

bool EvolutionStore::isGroupAt(std::size_t position) const {
  return at(position).isGroup;
}

const std::optional<std::string>& EvolutionStore::vlidAt(std::size_t position) const {
  return at(position).vlid;
}

text::DateTime EvolutionStore::timeAt(std::size_t position) const {
  const auto failure = failures_.find(position);
  if (failure != failures_.end()) std::rethrow_exception(failure->second);
  const ChangeTime& time = at(position).time;
  return text::fromUnixTime(time.seconds, time.nanoseconds);
}

std::string EvolutionStore::readCard(std::size_t position) {
  const Item& item = at(position);
  const bool lacksKey = item.vlid && !vcard::findCards(item.text).cards.front().vlid;
  return lacksKey ? withKey(item.text, *item.vlid) : item.text;
}

// The service accepts a stale contact without a word.
void EvolutionStore::requireUnchanged(const Item& item) {
  const auto now = book_->get(item.uid);
  if (!now)
    throw ContactStoreError(
        text::say("%1: 그 사이에 다른 프로그램이 지웠습니다",
                  "%1: another program has deleted this contact in the meantime", {item.uid}));
  const bool isSame =
      *now == item.text ||
      (contentFingerprint(*now) == contentFingerprint(item.text) &&
       vcard::findCards(*now).cards.front().vlid == vcard::findCards(item.text).cards.front().vlid);
  if (!isSame)
    throw ContactStoreError(
        text::say("%1: 그 사이에 다른 프로그램이 바꾸었습니다",
                  "%1: another program has changed this contact in the meantime", {item.uid}));
}

// The history and the table know of a write before it is made, and its file is ready.
void EvolutionStore::announce(const std::string& uid, const std::string& text, ChangeTime time,
                              const std::string& row) {
  const vcard::FileState state = mirror_->draft(uid, withPictures(text), time);
  if (settings_.watcher) settings_.watcher->writing(Mirror::nameOf(uid), state, row);
}

// Takes over a contact that was just saved, as it was read back. If the service cannot tell, the
// next run finds out.
void EvolutionStore::complete(Item& item, std::optional<std::string> stored,
                              const std::string& row) {
  if (!stored)
    throw ContactStoreError(text::say("%1: 저장한 연락처가 주소록에 없습니다",
                                      "%1: the saved contact is not in the address book",
                                      {item.uid}));
  item.text = *std::move(stored);
  if (times_->saved(item.uid, item.text, item.vlid, item.time) != item.sent) {
    announce(item.uid, item.text, item.time, row);  // the server has its own mind
  }
  mirror_->place(item.uid);
}

const EvolutionStore::Item* EvolutionStore::find(const std::string& cardText) const {
  const vcard::CardText card(cardText);
  const auto line = card.firstNamed("UID");
  const std::string uid = line ? card.property(*line).whole() : "";
  const auto found =
      std::find_if(items_.begin(), items_.end(), [&](const Item& item) { return item.uid == uid; });
  return found == items_.end() ? nullptr : &*found;
}

void EvolutionStore::putBack(const std::string& cardText, ChangeTime time) {
  const auto cards = vcard::findCards(cardText).cards;
  if (cards.empty())
    throw ContactStoreError(
        text::say("보관한 연락처를 읽을 수 없습니다", "the kept contact cannot be read"));
  const auto& vlid = cards.front().vlid;
  std::string uid;
  if (const Item* const item = find(cardText)) {
    requireUnchanged(*item);
    uid = item->uid;
    times_->saving(uid, cardText, vlid, time);
    book_->modify(withRemarkOf(item->text, cardText));
  } else {
    uid = book_->add({withRemarkOf("", cardText)}).at(0);
  }
  times_->saved(uid, book_->get(uid).value_or(cardText), vlid, time);
}

void EvolutionStore::remove(const std::string& cardText) {
  const Item* const item = find(cardText);
  if (item == nullptr) return;  // it is gone already
  requireUnchanged(*item);
  book_->remove(item->uid);
}

void EvolutionStore::saveCard(std::size_t position, const std::string& cardText,
                              std::optional<std::string> vlid, const std::string& row) {
  Item& item = items_[position - 1];
  // An edit in the same second as the last transfer was dated a second ahead. A save must not undo
  // that: if it is killed before its row is written, the pair would look in step without the edit.
  const ChangeTime time = std::max(ChangeTime::now(), item.time);
  if (!isPreview()) {
    requireUnchanged(item);
    if (settings_.watcher) settings_.watcher->beforeWriting();
    item.sent = times_->saving(item.uid, cardText, vlid, time);
    announce(item.uid, cardText, time, row);
    book_->modify(cardText);
  }
  item.text = cardText;
  item.time = time;
  item.vlid = std::move(vlid);
  if (!isPreview()) complete(item, book_->get(item.uid), row);
}

std::size_t EvolutionStore::saveNewCard(const std::string& uid, const std::string& cardText,
                                        std::optional<std::string> vlid, const std::string& row) {
  Item item{.uid = uid, .text = cardText, .vlid = vlid, .time = ChangeTime::now()};
  if (!isPreview()) {
    if (settings_.watcher) settings_.watcher->beforeWriting();
    item.sent = times_->saving(uid, cardText, vlid, item.time);
    announce(uid, cardText, item.time, row);
  }
  items_.push_back(std::move(item));
  const std::size_t position = items_.size();
  if (isPreview()) return position;
  if (!row.empty() && isLocal()) {
    postponed_.push_back({position, row});
    postponedSize_ += cardText.size();
  } else {
    store({{position, row}});
    if (const auto failure = failures_.find(position); failure != failures_.end()) {
      std::rethrow_exception(failure->second);
    }
  }
  return position;
}

// A server takes each contact by itself anyway.
bool EvolutionStore::isLocal() const {
  return book_->info().kind == "local";
}

// The rows of all these contacts were read before and get their dates afterwards. That must not
// take long, or an edit in between would be lost.
bool EvolutionStore::postponesNext() const {
  constexpr std::size_t kMost = 100;
  constexpr std::size_t kMostBytes = 4'000'000;
  return !isPreview() && isLocal() && postponed_.size() < kMost && postponedSize_ < kMostBytes;
}

void EvolutionStore::savePostponed() {
  const auto together = std::exchange(postponed_, {});
  postponedSize_ = 0;
  if (!together.empty()) store(together);
}

// Keeps what the step throws, for whoever asks for the contact's time.
template <typename Step>
void EvolutionStore::attempt(std::size_t position, Step step) {
  try {
    step();
  } catch (...) {
    failures_.insert_or_assign(position, std::current_exception());
  }
}

void EvolutionStore::store(const std::vector<Postponed>& together) {
  try {
    addTogether(together);
  } catch (const std::exception&) {
    if (together.size() == 1) {
      failures_.insert_or_assign(together.front().position, std::current_exception());
      return;
    }
    // One refused contact keeps all others out, and a service that died may have added all of them.
    for (const Postponed& each : together) {
      attempt(each.position, [&] {
        Item& item = items_[each.position - 1];
        auto stored = book_->get(item.uid);
        if (stored && contentFingerprint(*stored) == item.sent) {
          complete(item, std::move(stored), each.row);
        } else {
          addTogether({each});
        }
      });
    }
  }
}

void EvolutionStore::addTogether(const std::vector<Postponed>& together) {
  std::vector<std::string> texts;
  texts.reserve(together.size());
  for (const Postponed& each : together) texts.push_back(at(each.position).text);
  const auto uids = book_->add(texts);
  for (std::size_t i = 0; i < together.size(); ++i) {
    Item& item = items_[together[i].position - 1];
    if (item.uid == uids.at(i)) continue;
    item.uid = uids[i];
    announce(item.uid, item.text, item.time, together[i].row);
  }
  if (together.size() == 1) {
    complete(items_[together[0].position - 1], book_->get(uids[0]), together[0].row);
    return;
  }
  std::unordered_map<std::string, std::string> stored;
  for (StoredCard& card : book_->getAll(uids)) stored[card.uid] = std::move(card.text);
  for (const Postponed& each : together) {
    attempt(each.position, [&] {
      Item& item = items_[each.position - 1];
      const auto found = stored.find(item.uid);
      complete(item, found == stored.end() ? std::nullopt : std::optional(found->second), each.row);
    });
  }
}

}  // namespace vlout::outlook::evolution
