#include "outlook/vcard/vcard_store.h"

#include <algorithm>
#include <exception>
#include <set>

#include "outlook/vcard/vcard_contact.h"
#include "text/ascii.h"
#include "text/hash.h"
#include "text/language.h"

namespace vlout::outlook::vcard {
namespace {

text::Words strayText(Stray::Kind kind) {
  switch (kind) {
    case Stray::BeginWithoutEnd:
      return {"%1 %2행: END가 없어 이 vCard를 건너뜁니다",
              "%1, line %2: this vCard has no END and is passed over"};
    case Stray::EndWithoutBegin:
      return {"%1 %2행: BEGIN이 없는 END입니다", "%1, line %2: END without BEGIN"};
    default:
      return {"%1 %2행: vCard 밖의 글을 건너뜁니다",
              "%1, line %2: text outside vCards is passed over"};
  }
}

// True if lines of that name hold something that goes into a row.
bool isTransferred(std::string_view name) {
  const auto properties = contactProperties();
  return std::any_of(properties.begin(), properties.end(), [&](const PropertyInfo& info) {
    std::string_view names = info.vcard.names;
    for (; !names.empty(); names.remove_prefix(std::min(names.size(), names.find(' ') + 1))) {
      if (names.substr(0, names.find(' ')) == name) return true;
      if (names.find(' ') == std::string_view::npos) break;
    }
    return info.vcard.labelledName == name || info.vcard.nameInVersion4 == name;
  });
}

}  // namespace

VCardStore::~VCardStore() {
  try {
    static_cast<void>(writeGathered());
  } catch (const std::exception&) {
    // The journal keeps what could not be written; whoever opens the folder next is told why.
  }
}

bool VCardStore::connect() {
  if (folder_) {
    folder_->dropListing();  // a run that ended early has left it
    return true;
  }
  try {
    folder_ = makeFolder_(path_);
  } catch (const ContactStoreError& error) {
    connectFailure_ = error.what();
    return false;
  }
  connectFailure_.clear();
  return true;
}

void VCardStore::completeSaves(const Lose& lose) {
  lostBefore_.clear();
  if (folder_) complete(lose);
}

void VCardStore::complete(const Lose& lose) {
  for (const LostSave& lost : vcard::completeSaves(*folder_).lost) {
    lose(lost);
    lostBefore_.push_back(lost.person + ": " + lost.cause);
  }
  folder_->dropGathered();
}

// Saves that are still to be completed change the files.
void VCardStore::expectOpening() {
  if (folder_ && !folder_->gathered()) folder_->beginListing();
}

void VCardStore::openContactsFolder(const std::function<void()>& afterEach) {
  static_cast<void>(afterEach);  // the files are read at once, in less time than windows notice
  if (!folder_)
    throw ContactStoreError(text::say("%1: 연락처 폴더가 열려 있지 않습니다",
                                      "%1: the folder of contacts is not open", {path_}));
  files_.clear();
  items_.clear();
  shared_.clear();
  open_ = {};
  complete([](const LostSave&) {});  // nothing is left, unless somebody opens it out of turn
  notices_ = lostBefore_;
  const Moment now = currentMoment();
  FolderIndex index;
  if (!index_.file.empty()) index = FolderIndex(index_.file, folder_->identity());
  std::size_t known = 0;
  std::string buffer;
  std::vector<CardFile> found = folder_->cardFiles();
  files_.reserve(found.size());
  items_.reserve(found.size());
  for (CardFile& file : found) {
    const KnownFile* const entry = index.find(file.name);
    if (entry != nullptr) ++known;
    if (entry != nullptr && entry->isSettled && entry->sight == file.sight) {
      addKnown(std::move(file), *entry);
    } else {
      addFile(file, entry, now, buffer);
    }
  }
  indexIsOld_ = indexIsOld_ || known != index.size();
  for (const std::string& name : folder_->keptVersions()) {
    notices_.push_back(text::say(
        "%1: 다른 프로그램이 쓴 내용을 따로 두었습니다. 확인한 뒤 지우십시오",
        "%1: another program's version is kept here; delete it once you have looked at it",
        {name}));
  }
}

void VCardStore::addKnown(CardFile found, const KnownFile& known) {
  const std::size_t index = files_.size();
  files_.push_back({std::move(found.name), found.sight, items_.size(), known.cards.size(), true});
  if (known.cards.size() > 1) shared_[index].size = found.sight.state.size;
  for (std::size_t i = 0; i < known.cards.size(); ++i) {
    const KnownCard& card = known.cards[i];
    items_.push_back({index, i, card.isGroup, card.vlid, card.nameLines, card.hash, card.time});
  }
}

void VCardStore::addFile(const CardFile& found, const KnownFile* known, const Moment& now,
                         std::string& buffer) {
  const std::string& name = found.name;
  const std::size_t notices = notices_.size();
  // A file that cannot be read ends the run: which card it belongs to is not known, and a second
  // contact for that card must not be made.
  const auto state = folder_->read(name, buffer);
  if (!state) return;
  const auto form = convertFile(buffer);
  if (!form) {
    notices_.push_back(
        text::say("%1: 손상된 UTF-16 파일입니다", "%1: damaged UTF-16 file", {name}));
    return;
  }
  CardFileText text = findCards(buffer);
  if (text.isForeign()) {
    notices_.push_back(
        buffer.empty() ? text::say("%1: 빈 파일입니다", "%1: empty file", {name})
                       : text::say("%1: vCard 파일이 아닙니다", "%1: not a vCard file", {name}));
  } else {
    reportStrays(name, text.strays);
  }
  reportDoubts(name, buffer, *form, text.cards);
  File file{name, found.sight, items_.size(), text.cards.size()};
  file.isDoubtful = notices_.size() > notices;
  file.isSettled = !file.isDoubtful && found.sight.state == *state && hasSettled(found.sight, now);
  file.sight.state = *state;
  files_.push_back(std::move(file));
  if (text.cards.size() > 1) shared_[files_.size() - 1].size = state->size;
  for (std::size_t i = 0; i < text.cards.size(); ++i) {
    CardSpan& card = text.cards[i];
    if (card.vlid && !card.vlid->empty()) card.nameLines.clear();
    items_.push_back(
        {files_.size() - 1, i, card.isGroup, std::move(card.vlid), std::move(card.nameLines),
         text::hashOf(std::string_view(buffer).substr(card.start, card.size)), modifiedAt(*state)});
  }
  timeCards(known);
  if (index_.file.empty()) return;
  if (known == nullptr || *known != knownOf(files_.size() - 1)) indexIsOld_ = true;
}

// Sets the times of the cards of the file that was added last. A card whose bytes were seen in that
// file before has not changed since then, whenever the file was written. But if a file has only
// ever held one card, the file's time is the card's.
void VCardStore::timeCards(const KnownFile* known) {
  if (known == nullptr) return;
  const File& file = files_.back();
  const bool isSame = known->sight.state == file.sight.state;
  if (file.cards == 1 && known->cards.size() == 1 && !isSame) return;
  std::unordered_multimap<std::uint64_t, Moment> times;
  for (const KnownCard& card : known->cards) times.emplace(card.hash, card.time);
  for (std::size_t i = file.firstItem; i < items_.size(); ++i) {
    const auto time = times.find(items_[i].hash);
    if (time != times.end()) items_[i].time = times.extract(time).mapped();
  }
}

KnownFile VCardStore::knownOf(std::size_t index) const {
  const File& file = files_[index];
  KnownFile known{file.sight, file.isSettled};
  for (std::size_t i = 0; i < file.cards; ++i) {
    const Item& item = items_[file.firstItem + i];
    known.cards.push_back({item.isGroup, item.vlid, item.nameLines, item.hash, item.time});
  }
  return known;
}

// True if each contact of a file has a key; otherwise the file must be read.
bool VCardStore::hasKeys(const File& file) const {
  const auto first = items_.begin() + static_cast<std::ptrdiff_t>(file.firstItem);
  return std::all_of(first, first + static_cast<std::ptrdiff_t>(file.cards), [](const Item& item) {
    return item.isGroup || (item.vlid && !item.vlid->empty());
  });
}

void VCardStore::saveIndex() {
  if (index_.file.empty() || index_.isReadOnly || !indexIsOld_) return;
  const Moment now = currentMoment();
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < files_.size(); ++i) order.push_back(i);
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return files_[a].name < files_[b].name; });
  FolderIndexWriter writer(files_.size());
  for (const std::size_t i : order) {
    File& file = files_[i];
    const auto sight = file.isWritten ? folder_->look(file.name) : std::nullopt;
    if (sight && sight->state == file.sight.state) {
      file.sight = *sight;
      file.isSettled = !file.isDoubtful && hasKeys(file) && hasSettled(*sight, now);
      file.isWritten = false;
    }
    writer.add(file.name, knownOf(i));
  }
  writer.save(index_.file, folder_->identity());
  indexIsOld_ = false;
}

void VCardStore::reportStrays(const std::string& name, const std::vector<Stray>& strays) {
  for (const Stray& stray : strays) {
    notices_.push_back(text::say(strayText(stray.kind), {name, std::to_string(stray.line)}));
  }
}

// Text that is not in UTF-8 without saying so is reported once per file; what cannot be read, line
// by line.
void VCardStore::reportDoubts(const std::string& name, std::string_view text, FileForm form,
                              const std::vector<CardSpan>& cards) {
  std::set<std::string> guessed;
  for (const CardSpan& span : cards) {
    if (span.isPlain || span.isGroup) continue;
    for (const CardText::Doubt& doubt :
         CardText(text.substr(span.start, span.size), form).doubts()) {
      if (!isTransferred(doubt.name)) continue;
      if (!doubt.unreadable) {
        guessed.insert(doubt.charset);
        continue;
      }
      notices_.push_back(
          text::say("%1 %2행: %3의 글자를 %4(으)로 읽을 수 없어 그대로 둡니다",
                    "%1, line %2: %3 cannot be read as %4 and is left as it is",
                    {name, std::to_string(span.line + doubt.line), doubt.name, doubt.charset}));
    }
  }
  for (const std::string& set : guessed) {
    notices_.push_back(text::say("%1: 문자 집합을 밝히지 않은 글자를 %2(으)로 읽습니다",
                                 "%1: the card does not name its character set; it is read as %2",
                                 {name, set}));
  }
}

void VCardStore::requireItem(std::size_t index) const {
  if (index >= 1 && index <= items_.size()) return;
  throw ContactStoreError(
      text::say("%1: 연락처가 없습니다 #%2", "%1: no contact #%2", {path_, std::to_string(index)}));
}

std::unique_ptr<Contact> VCardStore::item(std::size_t index) {
  requireItem(index);
  return std::make_unique<VCardContact>(*this, index);
}

std::string VCardStore::keyWhenOpened(std::size_t index) const {
  const Item& item = itemAt(index);
  return item.isGroup ? std::string() : item.vlid.value_or("");
}

PersonName VCardStore::nameWhenOpened(std::size_t index) const {
  const Item& item = itemAt(index);
  if (item.isGroup || item.nameLines.empty()) return {};
  return nameOf(CardText("BEGIN:VCARD\r\n" + item.nameLines + "END:VCARD\r\n"));
}

std::unique_ptr<Contact> VCardStore::create() {
  return std::make_unique<VCardContact>(*this, std::nullopt);
}

std::string VCardStore::chooseCategories() {
  throw ContactStoreError(text::say("vCard 폴더에는 범주 선택 창이 없습니다",
                                    "A folder of vCards has no dialog to choose categories"));
}

void VCardStore::flush(const Lose& lose) {
  const std::vector<LostSave> lost = writeGathered();
  if (written_) folder_->flush();
  written_ = false;
  std::for_each(lost.begin(), lost.end(), lose);
  // Not before the files are on the disk and the lost saves are known.
  folder_->dropGathered();
  saveIndex();
}

text::DateTime VCardStore::timeAt(std::size_t position) const {
  const Moment& time = itemAt(position).time;
  return text::fromUnixTime(time.seconds, time.nanoseconds);
}

// The file's text and the places of its cards, kept until another file is needed: a file of many
// cards is read and searched once for all of them.
VCardStore::OpenFile& VCardStore::openFile(std::size_t file) {
  if (open_.file == file && open_.state == files_[file].sight.state) return open_;
  open_.file = kNoFile;
  const auto state = folder_->read(files_[file].name, open_.text);
  if (!state || *state != files_[file].sight.state) {
    throw ContactStoreError(text::say("%1/%2: 그 사이에 다른 프로그램이 바꾸었습니다",
                                      "%1/%2: another program has changed it in the meantime",
                                      {path_, files_[file].name}));
  }
  open_.form = convertFile(open_.text).value();  // it could be converted before
  open_.cards = findCards(open_.text).cards;
  open_.state = *state;
  open_.file = file;
  return open_;
}

FileForm VCardStore::formAt(std::size_t position) {
  return openFile(itemAt(position).file).form;
}

std::string VCardStore::readCard(std::size_t position) {
  const Item& item = itemAt(position);
  const auto shared = shared_.find(item.file);
  if (shared != shared_.end()) {
    const auto change = shared->second.changes.find(item.card);
    if (change != shared->second.changes.end()) return change->second.text;
  }
  const OpenFile& open = openFile(item.file);
  const CardSpan& span = open.cards.at(item.card);
  return open.text.substr(span.start, span.size);
}

void VCardStore::saveCard(std::size_t position, const std::string& cardText,
                          std::optional<std::string> vlid, const std::string& row) {
  Item& item = items_[position - 1];
  File& file = files_[item.file];
  if (file.cards > 1) {
    gatherCard(item, cardText, vlid.value_or(""));
  } else {
    OpenFile& open = openFile(item.file);
    const CardSpan& span = open.cards.at(item.card);
    open.file = kNoFile;
    open.text.replace(span.start, span.size, cardText);
    markWritten(file, folder_->replace(file.name, fileBytes(open.text, open.form), file.sight.state,
                                       false, row));
    item.hash = text::hashOf(cardText);
    item.time = modifiedAt(file.sight.state);
  }
  item.vlid = std::move(vlid);
  written_ = true;
}

void VCardStore::markWritten(File& file, const FileState& state) {
  file.sight = {state};
  file.isSettled = false;
  file.isWritten = true;
  indexIsOld_ = true;
}

// Saves one card among several: the journal keeps it, and the file is written once for all of them.
// The file keeps the whole second of its time; otherwise the other cards would look edited to
// whoever does not know the time of each card.
void VCardStore::gatherCard(Item& item, const std::string& cardText, std::string_view vlid) {
  const File& file = files_[item.file];
  SharedFile& shared = shared_.at(item.file);
  const auto known = shared.changes.find(item.card);
  const OpenFile& open = openFile(item.file);
  const CardSpan& span = open.cards.at(item.card);
  const std::string_view found = std::string_view(open.text).substr(span.start, span.size);
  const auto sizeOf = [&](std::string_view text) {
    return static_cast<std::int64_t>(fileBytes(text, open.form).size());
  };
  FileState willBe = file.sight.state;
  willBe.size = shared.size + sizeOf(cardText) -
                sizeOf(known == shared.changes.end() ? found : known->second.text);
  willBe.nanoseconds = nextInSecond(file.sight.state.nanoseconds);
  const auto row = holdsSameData(found, cardText) ? std::nullopt : text::parseInteger(vlid);
  folder_->gather({file.name, willBe, item.card, item.hash, row.value_or(0), cardText},
                  file.sight.state);
  CardChange& change = shared.changes[item.card];
  if (row) change.row = *row;
  change.earlier.push_back(item.hash);
  change.text = cardText;
  shared.size = willBe.size;
  item.hash = text::hashOf(cardText);
  item.time = modifiedAt(willBe);
}

// If a file cannot be written, its saves stay in the journal, and the other files are written all
// the same.
std::vector<LostSave> VCardStore::writeGathered() {
  std::vector<LostSave> lost;
  std::exception_ptr failure;
  for (auto& [index, shared] : shared_) {
    constexpr int kAttempts = 3;  // another program may write in just that moment
    for (int attempt = 1; !shared.changes.empty() && attempt <= kAttempts; ++attempt) {
      try {
        writeGathered(index, shared, lost);
      } catch (const ContactStoreError&) {
        if (attempt == kAttempts) failure = std::current_exception();
      }
    }
  }
  if (failure) std::rethrow_exception(failure);
  return lost;
}

void VCardStore::writeGathered(std::size_t index, SharedFile& shared, std::vector<LostSave>& lost) {
  File& file = files_[index];
  std::string text;
  const auto state = folder_->read(file.name, text);
  const MergedFile merged = mergeCards(text, shared.changes);
  if (state == file.sight.state) {
    markWritten(file, folder_->replace(file.name, merged.bytes, state, true, ""));
  } else {
    if (state && merged.isChanged) {
      static_cast<void>(folder_->rewrite(file.name, merged.bytes, *state));
    }
    markWritten(file, {});  // where its cards lie is not known any more
  }
  folder_->gatheredWritten(file.name, merged.lost);
  addLostSaves(file.name, state, shared.changes, merged, lost);
  shared.changes.clear();
}

std::size_t VCardStore::saveNewCard(const std::string& uid, const std::string& cardText,
                                    std::optional<std::string> vlid, const std::string& row) {
  const std::string name = uid + ".vcf";
  const FileState state = folder_->replace(name, cardText, std::nullopt, false, row);
  files_.push_back({name, {}, items_.size(), 1});
  markWritten(files_.back(), state);
  items_.push_back({files_.size() - 1,
                    0,
                    false,
                    std::move(vlid),
                    {},
                    text::hashOf(cardText),
                    modifiedAt(state)});
  written_ = true;
  return items_.size();
}

}  // namespace vlout::outlook::vcard
