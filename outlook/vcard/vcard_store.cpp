#include "outlook/vcard/vcard_store.h"

#include <algorithm>
#include <set>

#include "outlook/vcard/vcard_contact.h"

namespace vlout::outlook::vcard {
namespace {

std::string_view strayText(Stray::Kind kind) {
  switch (kind) {
    case Stray::BeginWithoutEnd:
      return "END가 없어 이 vCard를 건너뜁니다";
    case Stray::EndWithoutBegin:
      return "BEGIN이 없는 END입니다";
    default:
      return "vCard 밖의 글을 건너뜁니다";
  }
}

// Whether lines of that name hold something that goes into a row.
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

bool VCardStore::connect() {
  if (folder_) return true;
  try {
    folder_ = makeFolder_(path_);
  } catch (const ContactStoreError& error) {
    connectFailure_ = error.what();
    return false;
  }
  connectFailure_.clear();
  return true;
}

void VCardStore::openContactsFolder(const std::function<void()>& afterEach) {
  static_cast<void>(afterEach);  // the files are read at once, in less time than windows notice
  if (!folder_) throw ContactStoreError(path_ + ": 연락처 폴더가 열려 있지 않습니다");
  files_.clear();
  items_.clear();
  open_ = {};
  notices_.clear();
  std::string buffer;
  for (const CardFile& file : folder_->cardFiles()) addFile(file.name, buffer);
  for (const std::string& name : folder_->keptVersions()) {
    notices_.push_back(name + ": 다른 프로그램이 쓴 내용을 따로 두었습니다. 확인한 뒤 지우십시오");
  }
}

void VCardStore::addFile(const std::string& name, std::string& buffer) {
  // A file that cannot be read ends the run: which card it belongs to is not known, and a second
  // contact for that card must not be made.
  const auto state = folder_->read(name, buffer);
  if (!state) return;
  const auto form = convertFile(buffer);
  if (!form) {
    notices_.push_back(name + ": 손상된 UTF-16 파일입니다");
    return;
  }
  CardFileText text = findCards(buffer);
  if (text.cards.empty() && !text.hasUnended()) {
    notices_.push_back(name + (buffer.empty() ? ": 빈 파일입니다" : ": vCard 파일이 아닙니다"));
  } else {
    reportStrays(name, text.strays);
  }
  reportDoubts(name, buffer, *form, text.cards);
  for (std::size_t i = 0; i < text.cards.size(); ++i) {
    items_.push_back({files_.size(), i, text.cards[i].isGroup, std::move(text.cards[i].vlid)});
  }
  files_.push_back({name, *state, text.cards.size()});
}

void VCardStore::reportStrays(const std::string& name, const std::vector<Stray>& strays) {
  for (const Stray& stray : strays) {
    notices_.push_back(name + " " + std::to_string(stray.line) +
                       "행: " + std::string(strayText(stray.kind)));
  }
}

// What is not in UTF-8 and does not say so is told once a file; what cannot be read, line by line.
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
      notices_.push_back(name + " " + std::to_string(span.line + doubt.line) + "행: " + doubt.name +
                         "의 글자를 " + doubt.charset + "(으)로 읽을 수 없어 그대로 둡니다");
    }
  }
  for (const std::string& set : guessed) {
    notices_.push_back(name + ": 문자 집합을 밝히지 않은 글자를 ");
    notices_.back().append(set).append("(으)로 읽습니다");
  }
}

void VCardStore::requireItem(std::size_t index) const {
  if (index >= 1 && index <= items_.size()) return;
  throw ContactStoreError(path_ + ": 연락처가 없습니다 #" + std::to_string(index));
}

std::unique_ptr<Contact> VCardStore::item(std::size_t index) {
  requireItem(index);
  return std::make_unique<VCardContact>(*this, index);
}

std::vector<std::string> VCardStore::keys() const {
  std::vector<std::string> result;
  for (const Item& item : items_) {
    if (item.vlid && !item.isGroup) result.push_back(*item.vlid);
  }
  return result;
}

std::unique_ptr<Contact> VCardStore::create() {
  return std::make_unique<VCardContact>(*this, std::nullopt);
}

std::string VCardStore::chooseCategories() {
  throw ContactStoreError("vCard 폴더에는 범주 선택 창이 없습니다");
}

void VCardStore::flush() {
  if (written_) folder_->flush();
  written_ = false;
}

text::DateTime VCardStore::timeAt(std::size_t position) const {
  const FileState& state = files_[itemAt(position).file].state;
  return text::fromUnixTime(state.seconds, state.nanoseconds);
}

// The file's text and where its cards lie, kept until another file is asked for: a file of many
// cards is read and searched once for all of them.
VCardStore::OpenFile& VCardStore::openFile(std::size_t file) {
  if (open_.file == file && open_.state == files_[file].state) return open_;
  open_.file = kNoFile;
  const auto state = folder_->read(files_[file].name, open_.text);
  if (!state || *state != files_[file].state) {
    throw ContactStoreError(path_ + "/" + files_[file].name +
                            ": 그 사이에 다른 프로그램이 바꾸었습니다");
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
  const OpenFile& open = openFile(item.file);
  const CardSpan& span = open.cards.at(item.card);
  return open.text.substr(span.start, span.size);
}

void VCardStore::saveCard(std::size_t position, const std::string& cardText,
                          std::optional<std::string> vlid, const std::string& row) {
  Item& item = items_[position - 1];
  File& file = files_[item.file];
  OpenFile& open = openFile(item.file);
  CardSpan& span = open.cards.at(item.card);
  open.file = kNoFile;  // what is kept is right again only once the file is written
  open.text.replace(span.start, span.size, cardText);
  // The cards of one file share its time. Were it to move with every save, the others would look as
  // if they had been edited.
  const bool shared = file.cards > 1;
  file.state =
      folder_->replace(file.name, fileBytes(open.text, open.form), file.state, shared, row);
  const std::size_t grown = cardText.size() - span.size;  // modulo: a smaller card wraps round
  span.size = cardText.size();
  for (std::size_t i = item.card + 1; i < open.cards.size(); ++i) open.cards[i].start += grown;
  open.state = file.state;
  open.file = item.file;
  item.vlid = std::move(vlid);
  written_ = true;
}

std::size_t VCardStore::saveNewCard(const std::string& uid, const std::string& cardText,
                                    std::optional<std::string> vlid, const std::string& row) {
  const std::string name = uid + ".vcf";
  const FileState state = folder_->replace(name, cardText, std::nullopt, false, row);
  items_.push_back({files_.size(), 0, false, std::move(vlid)});
  files_.push_back({name, state, 1});
  written_ = true;
  return items_.size();
}

}  // namespace vlout::outlook::vcard
