#include "services/reserve_setting.h"

#include "korutil/profile.h"

namespace kor {
namespace {

constexpr char kSection[] = "System";
constexpr char kKey[] = "Reserve-Memory";

class ReserveSetting : public ReserveStore {
  public:
    DWORD read(DWORD fallback) override {
        return static_cast<DWORD>(
            appGetProfileInt(kSection, kKey, static_cast<int>(fallback), kProfileDefault, nullptr));
    }
    bool write(DWORD bytes) override {
        return appWriteProfileInt(kSection, kKey, static_cast<int>(bytes), kProfileDefault, nullptr);
    }
};

}  // namespace

ReserveStore& reserveSetting() {
    static ReserveSetting setting;
    return setting;
}

}  // namespace kor
