#include "repository/ClipEdit.h"

#include "host/edit/EditManager.h"
#include "host/object/ExtIDMgr.h"
#include "host/picture/VideoCompressionInfo.h"
#include "host/picture/VideoInterface.h"
#include "host/text/Unicode.h"

EditModifier makeClipEdit(RemoteAsset const& asset, ClipFacts const& facts) {
    double const editDuration_s = mPosn_Xlate(facts.duration_s, facts.durationMedium, MediumRollMedium::edit,
                                              MPosn_Xlate_Params(asset.frameRate, asset.frameRate));
    EditModifier edit =
        EditManager::makeNewClip(1, facts.audioChannels, editDuration_s, asset.frameRate, facts.cookie);
    if (edit.isEmpty()) {
        return edit;
    }
    edit->setTemporary(true);
    edit->setLogAttributes(asset.logAttributes);
    edit->setSourceMedium(facts.medium);
    edit->setSourceMediumDuration(facts.duration_s);
    edit->setVideoMetadata(facts.metadata, false);
    edit->setFrameBased(Zq::Image::Video::Interface::isProgressive(facts.metadata));
    edit->setTransfer(transfer_type::frameByFrame);
    edit->setSequence(0, false);

    // The label of a clip from a service always tells the same scan mode; what the clip really has stands in
    // its metadata.
    EditLabel label =
        editLabFrom(0, Zq::Image::ScanMode::interlacedUpperFirst, asset.frameRate, facts.countsIn1001);
    label.sourceOffset = 0;
    edit->addLabel(label, true);
    return edit;
}

RemoteAsset findAssetOfEdit(Cookie const& cookie, WideString const& shortName, AssetCookie assetCookie) {
    RemoteAsset asset;
    EditPtr const edit = EditPtr::i_open(cookie, 0);
    if (!edit) {
        return asset;
    }
    WideString const id = ExtIDMgr::instance().getAssociatedID(cookie, shortName);
    if (id.isEmpty()) {
        return asset;
    }
    ShotVideoMetadata const metadata = edit->getVideoMetadata();
    VideoCompressionInfo info;
    info.setInputImageFormat(metadata);
    info.getCompressionFormat() = CompressionFormat(metadata.dataFormat, 0.0);
    info.getCompressionFormat().setBitRate(edit->getBitRate());

    asset.id = id;
    if (assetCookie == AssetCookie::ofTheEdit) {
        asset.cookie = edit->getCookie();
    }
    asset.displayAttributes.add(LogAttribute(LogAttribute::eName), edit->getName());
    asset.displayAttributes.add(LogAttribute(LogAttribute::eFormat), fromUTF8(info.asString(0)));
    asset.displayAttributes.add(LogAttribute(LogAttribute::eFrameRate),
                                Zq::getDisplayString(edit->getSourceFrameRate()));
    LogAttribute const price(LogAttribute::ePrice);
    asset.displayAttributes.add(price, fromUTF8(edit->getLogAttributes().find(price)));
    return asset;
}
