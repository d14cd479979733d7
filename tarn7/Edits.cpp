// Edits made from assets, and the way back from an edit to its asset.

#include "host/edit/EditManager.h"
#include "host/object/ExtIDMgr.h"
#include "host/picture/VideoCompressionInfo.h"
#include "host/picture/VideoInterface.h"
#include "host/text/Unicode.h"
#include "tarn7/Tarn7Resource.h"

EditModifier Tarn7Resource::createEdit(RemoteAsset const& asset) {
    EditModifier edit;
    auto const* const item = dynamic_cast<Item const*>(asset.payload.get());
    if (item == nullptr) {
        return edit;
    }
    ShotVideoMetadata const metadata = getVideoMetadata(asset);
    MediumRollMedium const medium = getMediumRollfromInputDetails(metadata.scanMode, asset.frameRate);
    double const duration_s = getClipDuration(asset);
    // The length in the edit's own time goes by the rate alone, whatever medium the clip was recorded on.
    double const editDuration_s =
        mPosn_Xlate(duration_s, getRepresentativeSourceMediumfromFrameRate(asset.frameRate),
                    MediumRollMedium::edit, MPosn_Xlate_Params(asset.frameRate, asset.frameRate));

    edit =
        EditManager::makeNewClip(1, getAudioChannels(*item), editDuration_s, asset.frameRate, asset.cookie);
    if (edit.isEmpty()) {
        return edit;
    }
    edit->setTemporary(true);
    edit->setLogAttributes(asset.logAttributes);
    edit->setSourceMedium(medium);
    edit->setSourceMediumDuration(duration_s);
    edit->setVideoMetadata(metadata, false);
    edit->setFrameBased(Zq::Image::Video::Interface::isProgressive(metadata));
    edit->setTransfer(transfer_type::frameByFrame);
    edit->setSequence(0, false);

    // The label of a clip from the service always tells the same scan mode; what the clip really has stands
    // in its metadata.
    EditLabel label = editLabFrom(0, Zq::Image::ScanMode::interlacedUpperFirst, asset.frameRate,
                                  Zq::has1001Factor(asset.frameRate));
    label.sourceOffset = 0;
    edit->addLabel(label, true);
    return edit;
}

RemoteAsset Tarn7Resource::findRemoteAsset(Cookie const& cookie) {
    RemoteAsset asset;
    EditPtr const edit = EditPtr::i_open(cookie, 0);
    if (!edit) {
        return asset;
    }
    WideString const id = ExtIDMgr::instance().getAssociatedID(cookie, L"T7");
    if (id.isEmpty()) {
        return asset;
    }
    ShotVideoMetadata const metadata = edit->getVideoMetadata();
    VideoCompressionInfo info;
    info.setInputImageFormat(metadata);
    info.getCompressionFormat() = CompressionFormat(metadata.dataFormat, 0.0);
    info.getCompressionFormat().setBitRate(edit->getBitRate());

    asset.id = id;
    asset.cookie = edit->getCookie();
    asset.displayAttributes.add(LogAttribute(LogAttribute::eName), edit->getName());
    asset.displayAttributes.add(LogAttribute(LogAttribute::eFormat), fromUTF8(info.asString(0)));
    asset.displayAttributes.add(LogAttribute(LogAttribute::eFrameRate),
                                Zq::getDisplayString(edit->getSourceFrameRate()));
    LogAttribute const price(LogAttribute::ePrice);
    asset.displayAttributes.add(price, fromUTF8(edit->getLogAttributes().find(price)));
    return asset;
}
