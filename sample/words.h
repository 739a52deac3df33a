// What invented cards are made of: folders, districts, names, companies, and the forms in which
// people write them. Only `sample/cards.cpp` draws from these tables; another order or number of
// entries gives other cards for the same seed.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace vlout::sample {

enum class Trade { General, Press };

struct FolderRow {
  std::int64_t id;
  std::int64_t parent;
  std::string_view name;
  int weight;
  std::string_view place;  // a region or a district that its companies lie in; empty for any
  Trade trade;
};

// 동창회 is below a folder with a larger id, as if the user had moved it in the host.
inline constexpr auto kFolders = std::to_array<FolderRow>({
    {2, 1, "미정", 4, "", Trade::General},
    {3, 1, "거래처", 14, "", Trade::General},
    {4, 3, "서울", 12, "서울", Trade::General},
    {5, 4, "강남구", 12, "강남구", Trade::General},
    {6, 3, "경기/인천", 9, "경기/인천", Trade::General},
    {7, 1, "협력사", 9, "", Trade::General},
    {8, 7, "지방", 7, "지방", Trade::General},
    {9, 1, "언론", 6, "", Trade::Press},
    {10, 12, "동창회", 6, "", Trade::General},
    {11, 10, "대학 동창", 5, "", Trade::General},
    {12, 1, "개인", 6, "", Trade::General},
    {13, 4, "마포구", 6, "마포구", Trade::General},
    {14, 1, "미지정", 4, "", Trade::General},
});
struct DistrictRow {
  std::string_view region;
  std::string_view sido;
  std::string_view sigungu;
  std::string_view areaCode;
  int firstZipcode;
  int zipcodes;
  std::array<std::string_view, 3> streets;
};

inline constexpr auto kDistricts = std::to_array<DistrictRow>({
    {"서울", "서울특별시", "강남구", "02", 6000, 370, {"테헤란로", "역삼로", "학동로"}},
    {"서울", "서울특별시", "서초구", "02", 6500, 300, {"서초대로", "반포대로", "효령로"}},
    {"서울", "서울특별시", "종로구", "02", 3000, 200, {"종로", "율곡로", "새문안로"}},
    {"서울", "서울특별시", "중구", "02", 4500, 135, {"을지로", "세종대로", "퇴계로"}},
    {"서울", "서울특별시", "마포구", "02", 3900, 300, {"월드컵북로", "양화로", "마포대로"}},
    {"서울", "서울특별시", "영등포구", "02", 7200, 250, {"여의대로", "국제금융로", "당산로"}},
    {"서울", "서울특별시", "송파구", "02", 5500, 350, {"올림픽로", "법원로", "백제고분로"}},
    {"서울", "서울특별시", "금천구", "02", 8500, 160, {"가산디지털1로", "벚꽃로", "시흥대로"}},
    {"서울", "서울특별시", "성동구", "02", 4700, 100, {"성수이로", "왕십리로", "아차산로"}},
    {"경기/인천", "경기도", "성남시 분당구", "031", 13450, 190, {"판교로", "황새울로", "정자일로"}},
    {"경기/인천", "경기도", "수원시 영통구", "031", 16500, 200, {"광교중앙로", "매영로", "영통로"}},
    {"경기/인천", "경기도", "안양시 동안구", "031", 13900, 200, {"시민대로", "흥안대로", "학의로"}},
    {"경기/인천", "경기도", "고양시 일산동구", "031", 10300, 160, {"중앙로", "정발산로", "백마로"}},
    {"경기/인천", "경기도", "화성시", "031", 18200, 400, {"동탄대로", "향남로", "효행로"}},
    {"경기/인천",
     "인천광역시",
     "연수구",
     "032",
     21900,
     110,
     {"컨벤시아대로", "센트럴로", "청능대로"}},
    {"경기/인천", "인천광역시", "남동구", "032", 21500, 190, {"남동대로", "인하로", "예술로"}},
    {"지방", "부산광역시", "해운대구", "051", 48000, 120, {"센텀중앙로", "해운대로", "마린시티로"}},
    {"지방", "부산광역시", "부산진구", "051", 47100, 250, {"중앙대로", "가야대로", "동성로"}},
    {"지방", "대구광역시", "수성구", "053", 42000, 280, {"동대구로", "달구벌대로", "청수로"}},
    {"지방", "대전광역시", "유성구", "042", 34000, 230, {"대학로", "테크노중앙로", "엑스포로"}},
    {"지방", "광주광역시", "서구", "062", 61900, 150, {"상무중앙로", "내방로", "죽봉대로"}},
    {"지방", "울산광역시", "남구", "052", 44600, 180, {"삼산로", "돋질로", "중앙로"}},
    {"지방", "세종특별자치시", "", "044", 30000, 150, {"한누리대로", "도움6로", "갈매로"}},
    {"지방", "강원특별자치도", "춘천시", "033", 24200, 260, {"중앙로", "퇴계로", "춘천로"}},
    {"지방",
     "충청북도",
     "청주시 흥덕구",
     "043",
     28300,
     170,
     {"직지대로", "가로수로", "오송생명로"}},
    {"지방", "충청남도", "천안시 서북구", "041", 31000, 180, {"불당대로", "쌍용대로", "번영로"}},
    {"지방", "전북특별자치도", "전주시 완산구", "063", 54900, 250, {"홍산로", "효자로", "팔달로"}},
    {"지방", "경상남도", "창원시 성산구", "055", 51400, 170, {"중앙대로", "원이대로", "창원대로"}},
    {"지방", "제주특별자치도", "제주시", "064", 63000, 350, {"연북로", "노형로", "첨단로"}},
});

struct Syllable {
  std::string_view hangul;
  std::string_view latin;
};

struct Surname {
  Syllable name;
  int weight;
};

inline constexpr auto kSurnames = std::to_array<Surname>({
    {{"김", "kim"}, 215},    {{"이", "lee"}, 147},     {{"박", "park"}, 84},
    {{"최", "choi"}, 47},    {{"정", "jung"}, 43},     {{"강", "kang"}, 24},
    {{"조", "cho"}, 21},     {{"윤", "yoon"}, 21},     {{"장", "jang"}, 20},
    {{"임", "lim"}, 17},     {{"한", "han"}, 15},      {{"오", "oh"}, 15},
    {{"서", "seo"}, 15},     {{"신", "shin"}, 15},     {{"권", "kwon"}, 14},
    {{"황", "hwang"}, 14},   {{"안", "ahn"}, 14},      {{"송", "song"}, 14},
    {{"류", "ryu"}, 10},     {{"전", "jeon"}, 11},     {{"홍", "hong"}, 11},
    {{"고", "ko"}, 9},       {{"문", "moon"}, 9},      {{"양", "yang"}, 9},
    {{"손", "son"}, 9},      {{"배", "bae"}, 8},       {{"백", "baek"}, 8},
    {{"허", "heo"}, 7},      {{"유", "yoo"}, 6},       {{"남", "nam"}, 6},
    {{"심", "shim"}, 5},     {{"노", "noh"}, 5},       {{"하", "ha"}, 5},
    {{"곽", "kwak"}, 4},     {{"성", "sung"}, 4},      {{"차", "cha"}, 4},
    {{"주", "joo"}, 4},      {{"우", "woo"}, 4},       {{"구", "koo"}, 4},
    {{"민", "min"}, 3},      {{"진", "jin"}, 3},       {{"지", "ji"}, 3},
    {{"엄", "um"}, 3},       {{"채", "chae"}, 3},      {{"원", "won"}, 3},
    {{"천", "chun"}, 3},     {{"방", "bang"}, 2},      {{"공", "kong"}, 2},
    {{"현", "hyun"}, 2},     {{"함", "ham"}, 2},       {{"변", "byun"}, 2},
    {{"염", "yeom"}, 2},     {{"남궁", "namgung"}, 5}, {{"황보", "hwangbo"}, 4},
    {{"선우", "sunwoo"}, 4}, {{"제갈", "jegal"}, 3},
});

inline constexpr auto kMaleFirst = std::to_array<Syllable>({
    {"민", "min"},   {"준", "jun"},   {"성", "sung"},  {"재", "jae"},   {"동", "dong"},
    {"영", "young"}, {"상", "sang"},  {"현", "hyun"},  {"승", "seung"}, {"정", "jung"},
    {"진", "jin"},   {"태", "tae"},   {"기", "ki"},    {"종", "jong"},  {"우", "woo"},
    {"경", "kyung"}, {"광", "kwang"}, {"병", "byung"}, {"용", "yong"},  {"창", "chang"},
    {"도", "do"},    {"시", "si"},    {"건", "gun"},   {"규", "kyu"},   {"형", "hyung"},
    {"세", "se"},    {"원", "won"},   {"찬", "chan"},
});
inline constexpr auto kMaleSecond = std::to_array<Syllable>({
    {"수", "soo"},  {"호", "ho"},   {"준", "jun"},   {"우", "woo"},  {"현", "hyun"}, {"석", "seok"},
    {"진", "jin"},  {"훈", "hoon"}, {"철", "chul"},  {"식", "sik"},  {"환", "hwan"}, {"민", "min"},
    {"섭", "sup"},  {"규", "kyu"},  {"원", "won"},   {"혁", "hyuk"}, {"욱", "wook"}, {"성", "sung"},
    {"일", "il"},   {"태", "tae"},  {"윤", "yoon"},  {"빈", "bin"},  {"찬", "chan"}, {"열", "yeol"},
    {"근", "keun"}, {"배", "bae"},  {"영", "young"}, {"범", "bum"},
});
inline constexpr auto kFemaleFirst = std::to_array<Syllable>({
    {"지", "ji"},    {"은", "eun"},   {"수", "soo"},  {"미", "mi"},   {"혜", "hye"},
    {"영", "young"}, {"경", "kyung"}, {"현", "hyun"}, {"윤", "yoon"}, {"유", "yoo"},
    {"선", "sun"},   {"민", "min"},   {"소", "so"},   {"정", "jung"}, {"예", "ye"},
    {"서", "seo"},   {"연", "yeon"},  {"다", "da"},   {"하", "ha"},   {"주", "joo"},
    {"채", "chae"},  {"가", "ga"},    {"보", "bo"},   {"세", "se"},   {"나", "na"},
    {"효", "hyo"},   {"승", "seung"}, {"진", "jin"},
});
inline constexpr auto kFemaleSecond = std::to_array<Syllable>({
    {"영", "young"}, {"은", "eun"},  {"희", "hee"}, {"정", "jung"},  {"숙", "sook"}, {"진", "jin"},
    {"아", "ah"},    {"연", "yeon"}, {"미", "mi"},  {"경", "kyung"}, {"주", "joo"},  {"현", "hyun"},
    {"윤", "yoon"},  {"선", "sun"},  {"린", "rin"}, {"원", "won"},   {"혜", "hye"},  {"나", "na"},
    {"민", "min"},   {"서", "seo"},  {"인", "in"},  {"화", "hwa"},   {"옥", "ok"},   {"란", "ran"},
    {"림", "rim"},   {"지", "ji"},   {"빈", "bin"}, {"별", "byul"},
});
inline constexpr auto kSingle = std::to_array<Syllable>({
    {"준", "jun"},
    {"혁", "hyuk"},
    {"찬", "chan"},
    {"솔", "sol"},
    {"빈", "bin"},
    {"율", "yul"},
    {"건", "gun"},
    {"현", "hyun"},
    {"훈", "hoon"},
    {"별", "byul"},
    {"샘", "saem"},
    {"진", "jin"},
});

// S and G stand for surname and given name in Hangul, F and L for given name and surname in Latin
// letters, f and l for the same in lower case, d for a digit; everything else stands for itself.
struct Form {
  std::string_view pattern;
  int weight;
};
inline constexpr auto kNameForms =
    std::to_array<Form>({{"SG", 90}, {"S G", 3}, {"S,G", 1}, {"S, G", 1}, {"F L", 3}, {"L, F", 2}});
inline constexpr auto kMailForms = std::to_array<Form>(
    {{"f.l", 35}, {"lf", 20}, {"fl", 15}, {"f_l", 10}, {"fdd", 10}, {"l.f", 10}});

struct CompanyStem {
  std::string_view hangul;
  std::string_view latin;
};
inline constexpr auto kCompanyStems = std::to_array<CompanyStem>({
    {"도담누리", "Dodamnuri"},   {"새벽뜰", "Saebyeokddul"}, {"온새미로", "Onsaemiro"},
    {"해오름달", "Haeoreumdal"}, {"미르온", "Mireuon"},      {"다솜결", "Dasomgyeol"},
    {"나래울", "Naraeul"},       {"푸른솔빛", "Pureunsol"},  {"별하재", "Byeolhajae"},
    {"이든마루", "Edenmaru"},    {"가람뫼", "Garammoe"},     {"초록나루", "Choroknaru"},
    {"달빛여울", "Dalbityeoul"}, {"너른벌", "Neoreunbeol"},  {"아라솔찬", "Arasolchan"},
    {"단비온", "Danbion"},       {"윤슬재", "Yunseuljae"},   {"산들결", "Sandeulgyeol"},
    {"고운터", "Gounteo"},       {"여울목", "Yeoulmok"},     {"하늬바람", "Hanuibaram"},
    {"시나브로", "Sinabro"},     {"모꼬지", "Mokkoji"},      {"늘해랑", "Neulhaerang"},
});

struct CompanyLine {
  std::string_view hangul;
  std::string_view latin;
  Trade trade;
};
inline constexpr auto kCompanyLines = std::to_array<CompanyLine>({
    {"소프트", "Soft", Trade::General},       {"테크", "Tech", Trade::General},
    {"물산", "Trading", Trade::General},      {"산업", "Industries", Trade::General},
    {"전자", "Electronics", Trade::General},  {"건설", "Construction", Trade::General},
    {"푸드", "Foods", Trade::General},        {"로지스", "Logis", Trade::General},
    {"컨설팅", "Consulting", Trade::General}, {"디자인", "Design", Trade::General},
    {"바이오", "Bio", Trade::General},        {"정밀", "Precision", Trade::General},
    {"에너지", "Energy", Trade::General},     {"시스템즈", "Systems", Trade::General},
    {"화학", "Chemical", Trade::General},     {"엔지니어링", "Engineering", Trade::General},
    {"일보", "Daily", Trade::Press},          {"경제신문", "Economic News", Trade::Press},
    {"방송", "Broadcasting", Trade::Press},   {"미디어", "Media", Trade::Press},
});

struct CompanyForm {
  std::string_view before;
  std::string_view after;
};
inline constexpr auto kCompanyForms = std::to_array<CompanyForm>({{"(주)", ""},
                                                                  {"㈜", ""},
                                                                  {"", "주식회사"},
                                                                  {"", ""},
                                                                  {"(주)", ""},
                                                                  {"주식회사 ", ""},
                                                                  {"", "(주)"}});

inline constexpr auto kMailDomains =
    std::to_array<std::string_view>({"example.com", "example.co.kr", "example.kr", "example.net"});

struct TradeName {
  std::string_view name;
  Trade trade;
  int weight;
};
inline constexpr auto kDepartments = std::to_array<TradeName>({
    {"영업부", Trade::General, 12},    {"영업1팀", Trade::General, 8},
    {"해외영업팀", Trade::General, 6}, {"마케팅팀", Trade::General, 8},
    {"총무부", Trade::General, 6},     {"인사팀", Trade::General, 5},
    {"재무팀", Trade::General, 5},     {"구매팀", Trade::General, 8},
    {"생산관리부", Trade::General, 5}, {"품질보증팀", Trade::General, 4},
    {"기술연구소", Trade::General, 8}, {"개발2팀", Trade::General, 8},
    {"경영기획실", Trade::General, 6}, {"고객지원센터", Trade::General, 4},
    {"R&D센터", Trade::General, 4},    {"편집국", Trade::Press, 5},
    {"경제부", Trade::Press, 5},       {"산업부", Trade::Press, 4},
    {"사회부", Trade::Press, 3},       {"보도제작국", Trade::Press, 3},
});
inline constexpr auto kJobTitles = std::to_array<TradeName>({
    {"사원", Trade::General, 6},       {"주임", Trade::General, 6},
    {"대리", Trade::General, 15},      {"과장", Trade::General, 17},
    {"차장", Trade::General, 12},      {"부장", Trade::General, 11},
    {"팀장", Trade::General, 9},       {"이사", Trade::General, 7},
    {"상무이사", Trade::General, 4},   {"전무이사", Trade::General, 2},
    {"대표이사", Trade::General, 7},   {"연구원", Trade::General, 4},
    {"책임연구원", Trade::General, 4}, {"Manager", Trade::General, 2},
    {"기자", Trade::Press, 10},        {"차장", Trade::Press, 4},
    {"부장", Trade::Press, 3},         {"PD", Trade::Press, 2},
    {"논설위원", Trade::Press, 1},
});

inline constexpr auto kBuildings =
    std::to_array<std::string_view>({"도담빌딩", "새벽타워", "나래센터", "여울프라자", "미르빌딩",
                                     "다솜타워", "윤슬벤처타운", "해오름지식산업센터"});
inline constexpr auto kApartments = std::to_array<std::string_view>(
    {"도담마을아파트", "새벽뜰아파트", "나래빌라", "여울마을", "미르파크", "다솜하이츠"});

struct Separator {
  std::string_view text;
  int weight;
};
inline constexpr auto kPhoneSeparators =
    std::to_array<Separator>({{"-", 90}, {"", 5}, {".", 3}, {" ", 2}});

inline constexpr auto kCategories = std::to_array<std::string_view>(
    {"거래처", "거래처", "거래처, VIP", "VIP", "협력사", "협력사, 거래처", "세미나",
     "세미나, 거래처", "골프", "동창", "가족, 친구", "언론", "거래처, 골프, VIP", "전시회 2024"});

inline constexpr auto kMemos = std::to_array<std::string_view>({
    "2024년 봄 전시회 부스에서 명함 교환",
    "견적서 회신 대기 중",
    "담당자 변경 예정. 후임 확인 필요",
    "매월 첫째 주 월요일 정기 회의",
    "주차는 건물 뒤편 이용",
    "점심 약속은 수요일만 가능",
    "동호회에서 처음 만남",
    "계약 갱신일 확인할 것 (매년 3월)",
    "방문 전 전화 요망\r\n오전 10시 이후 통화 가능",
    "1차 미팅: 제품 소개\r\n2차 미팅: 단가 협의\r\n다음 일정은 추후 결정",
    "소개: 협력사 박 부장\r\n관심 품목: 센서, 제어기\r\n\r\n경쟁사 제품 사용 중",
    "납품 조건\r\n- 선금 30%\r\n- 잔금 60일 이내",
    "세미나 발표자료 요청함\r\n자료 받으면 회신 (메일로)",
    "별명은 '불도저'; 회의록에는 \"김 이사\"로 적음",
    "구호: \"고객이 먼저다\"; 명함 뒷면 참고",
    "품번 A'-12 재고 문의; 답변은 \"가능\"\r\n납기 2주",
    "It's a \"VIP\" contact; call before visiting",
    "회사 이전 예정?\r\n새 주소 @ 확인 #1",
});

}  // namespace vlout::sample
