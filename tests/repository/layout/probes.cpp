// One concrete class over each class whose order of virtual operations is part of the contract. The compiler
// writes down their tables; pure operations show in them because every probe overrides those of its base.
#include <type_traits>

#include "host/modules/ZqPluginBase.h"
#include "host/parameters/iParam.h"
#include "repository/MediaFileRepositoryBase.h"

// The destructor is declared first and defined below, so that the table is written in this file.
struct IdentifiedProbe : Identified {
    ~IdentifiedProbe() override;
};
IdentifiedProbe::~IdentifiedProbe() = default;

struct RemoteAssetProbe : RemoteAsset {
    ~RemoteAssetProbe() override;
};
RemoteAssetProbe::~RemoteAssetProbe() = default;

struct ProjectListenerProbe : ProjectListener {
    ~ProjectListenerProbe() override;
};
ProjectListenerProbe::~ProjectListenerProbe() = default;

struct ServiceConnectionProbe : ServiceConnection {
    ~ServiceConnectionProbe() override;
};
ServiceConnectionProbe::~ServiceConnectionProbe() = default;

struct iDataReceiverProbe : iHTTPServer::iDataReceiver {
    ~iDataReceiverProbe() override;
    bool receiveData(std::uint64_t, Zq::Ptr<iMemHolder> const&) override;
};
iDataReceiverProbe::~iDataReceiverProbe() = default;

struct ZqComponentBaseProbe : ZqComponentBase {
    ~ZqComponentBaseProbe() override;
};
ZqComponentBaseProbe::~ZqComponentBaseProbe() = default;

struct ZqResourceTypeBaseProbe : ZqResourceTypeBase {
    using ZqResourceTypeBase::ZqResourceTypeBase;
    ~ZqResourceTypeBaseProbe() override;
};
ZqResourceTypeBaseProbe::~ZqResourceTypeBaseProbe() = default;

struct ZqPluginBaseProbe : ZqPluginBase {
    using ZqPluginBase::ZqPluginBase;
    ~ZqPluginBaseProbe() override;
};
ZqPluginBaseProbe::~ZqPluginBaseProbe() = default;

struct ZqDeviceDriverBaseProbe : ZqDeviceDriverBase {
    using ZqDeviceDriverBase::ZqDeviceDriverBase;
    ~ZqDeviceDriverBaseProbe() override;
};
ZqDeviceDriverBaseProbe::~ZqDeviceDriverBaseProbe() = default;

struct iFileProviderProbe : iFileProvider {
    ~iFileProviderProbe() override;
    // Here and below in the order of the alphabet: the place of an operation is the base's to say.
    iFileManager::eCopyRC copyFile(WideString const&, WideString const&, bool,
                                   iFileManager::ProgressCallback) override;
    bool handlesFile(WideString const&) const override;
    bool isRemote() const override;
    WideString mapPath(WideString const&) const override;
    WideString mapPathForReading(WideString const&) const override;
    WideString mapPathForWriting(WideString const&) const override;
    Zq::Ptr<iFile> openFile(WideString const&, int, int, int, int) override;
};
iFileProviderProbe::~iFileProviderProbe() = default;

struct iParamProbe : GenericParam::iParam {
    ~iParamProbe() override;
    void addChangeHandler(Zq::Ptr<GenericParam::iValueChangeHandler>) override;
    void addValueConstraint(Zq::Ptr<GenericParam::iValueConstraint>) override;
    NarrowString getID() const override;
    WideString getLegend() const override;
    std::uint32_t getPresentationHints() const override;
    WideString getTooltip() const override;
    WideString getValueAsString() const override;
    NarrowString getValueType() const override;
    bool isActive() const override;
    bool isActiveIf(Zq::Ptr<iParam> const&, WideString const&) override;
    bool isGreaterThan(Zq::Ptr<iParam> const&) override;
    bool isLessThan(Zq::Ptr<iParam> const&) override;
    bool isVisibleIf(Zq::Ptr<iParam> const&, WideString const&) override;
    Zq::Ptr<iParam> makeCopy() const override;
    bool reset() override;
    void setActive(bool) override;
    void setPresentationHints(std::uint32_t) override;
    bool setValueFromString(WideString const&) override;
};
iParamProbe::~iParamProbe() = default;

// What a repository must bring, over the interface alone or over the shared base.
template <class Contract>
struct Repository : Contract {
    std::int32_t connect(HTTPConnectionInfo const&, LoggerHandle) override;
    bool fetchFullMedia(LightweightVector<RemoteAsset> const&, std::int32_t, LoggerHandle) override;
    RemoteAsset findRemoteAsset(Cookie const&) override;
    RepositoryDescription getDescription() const override;
    LightweightVector<LogAttribute> getLogAttributes() const override;
    WideString getLoginForm() override;
    WideString getLoginLinkForm() override;
    LightweightVector<RemoteAsset> getPurchasedAssets() override;
    LightweightVector<SearchOptionGroup> getSearchOptions() override;
    WideString getShortName() const override;
    std::int32_t login(configb const&) override;
    void logout() override;
    std::int32_t requestCreditPurchase(LightweightVector<RemoteAsset> const&) override;
    std::int32_t requestExternalPurchase(LightweightVector<RemoteAsset> const&) override;
};

struct iMediaFileRepositoryProbe : Repository<iMediaFileRepository> {
    ~iMediaFileRepositoryProbe() override;
    Zq::Ptr<Zq::Guard> addListener(Zq::Ptr<Listener> const&) override;
    void disconnect() override;
    Cookie findLocalItem(RemoteAsset const&) override;
    SearchResults getFiles(BrowseQuery const&, bool) override;
    Zq::Ptr<iHostImage> getThumbnail(RemoteAsset const&) override;
    ImportResult import(LightweightVector<RemoteAsset> const&, LoggerHandle) override;
    bool isConnected() const override;
    ContainerModifier<Document> openDocument(RemoteAsset const&) override;
    EditModifier openEdit(RemoteAsset const&, eOpenFlags) override;
    SearchResults search(SearchQuery const&) override;
};
iMediaFileRepositoryProbe::~iMediaFileRepositoryProbe() = default;

struct MediaFileRepositoryBaseProbe : Repository<MediaFileRepositoryBase> {
    ~MediaFileRepositoryBaseProbe() override;
    EditModifier createEdit(RemoteAsset const&) override;
    WideString getFileExtension() const override;
    WideString getRemoteLocation(RemoteAsset const&, eMediaType) const override;
    SearchResults searchInternal(SearchQuery const&) override;
};
MediaFileRepositoryBaseProbe::~MediaFileRepositoryBaseProbe() = default;

static_assert(!std::is_abstract_v<iMediaFileRepositoryProbe> &&
              !std::is_abstract_v<MediaFileRepositoryBaseProbe> && !std::is_abstract_v<iFileProviderProbe> &&
              !std::is_abstract_v<iDataReceiverProbe> && !std::is_abstract_v<iParamProbe>);
