#include "outlook/vcard/vcard_store.h"

#include "outlook/vcard/vcard_contact.h"

namespace vlout::outlook::vcard {

bool VCardStore::connect() {
  if (folder_) return true;
  try {
    folder_ = std::make_unique<Folder>(path_);
  } catch (const ContactStoreError& error) {
    connectFailure_ = error.what();
    return false;
  }
  connectFailure_.clear();
  return true;
}

void VCardStore::openContactsFolder() {
  if (!folder_) throw ContactStoreError(path_ + ": 연락처 폴더가 열려 있지 않습니다");
  files_.clear();
  items_.clear();
  notices_.clear();
  std::string buffer;
  for (const std::string& name : folder_->cardFiles()) {
    try {
      addFile(name, buffer);
    } catch (const ContactStoreError& error) {
      notices_.emplace_back(error.what());
    }
  }
}

void VCardStore::addFile(const std::string& name, std::string& buffer) {
  const auto state = folder_->read(name, buffer);
  if (!state) return;
  CardFileText text = findCards(buffer);
  if (text.cutOff) notices_.push_back(name + ": 잘린 vCard가 있어 건너뜁니다");
  if (text.cards.empty() && !text.cutOff) {
    notices_.push_back(name + (buffer.empty() ? ": 빈 파일입니다" : ": vCard 파일이 아닙니다"));
  }
  for (std::size_t i = 0; i < text.cards.size(); ++i) {
    items_.push_back({files_.size(), i, text.cards[i].isGroup, std::move(text.cards[i].vlid)});
  }
  files_.push_back({name, *state, text.cards.size()});
}

std::unique_ptr<Contact> VCardStore::item(std::size_t index) {
  if (index < 1 || index > items_.size()) {
    throw ContactStoreError(path_ + ": 연락처가 없습니다 #" + std::to_string(index));
  }
  return std::make_unique<VCardContact>(*this, index);
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

const FileState& VCardStore::stateAt(std::size_t position) const {
  return files_[itemAt(position).file].state;
}

namespace {

// The card's place in the file's text as it is now.
CardSpan spanOf(const std::string& text, std::size_t card, const std::string& fileName) {
  const CardFileText found = findCards(text);
  if (card >= found.cards.size()) {
    throw ContactStoreError(fileName + ": 그 사이에 다른 프로그램이 바꾸었습니다");
  }
  return found.cards[card];
}

}  // namespace

std::string VCardStore::readCard(std::size_t position) {
  const Item& item = itemAt(position);
  std::string text;
  static_cast<void>(folder_->read(files_[item.file].name, text));
  const CardSpan span = spanOf(text, item.card, files_[item.file].name);
  return text.substr(span.start, span.size);
}

void VCardStore::saveCard(std::size_t position, const std::string& cardText,
                          std::optional<std::string> vlid) {
  Item& item = items_[position - 1];
  File& file = files_[item.file];
  std::string text;
  static_cast<void>(folder_->read(file.name, text));
  const CardSpan span = spanOf(text, item.card, file.name);
  text.replace(span.start, span.size, cardText);
  // The cards of one file share its time. Were it to move with every save, the others would look as
  // if they had been edited.
  const bool shared = file.cards > 1;
  file.state = folder_->replace(file.name, text, file.state, shared);
  item.vlid = std::move(vlid);
  written_ = true;
}

std::size_t VCardStore::saveNewCard(const std::string& uid, const std::string& cardText,
                                    std::optional<std::string> vlid) {
  const std::string name = uid + ".vcf";
  const FileState state = folder_->replace(name, cardText, std::nullopt, false);
  items_.push_back({files_.size(), 0, false, std::move(vlid)});
  files_.push_back({name, state, 1});
  written_ = true;
  return items_.size();
}

}  // namespace vlout::outlook::vcard
