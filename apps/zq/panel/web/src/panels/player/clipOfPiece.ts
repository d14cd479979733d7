import type { Clip, Piece } from '../../api/types.ts';

// The clip as far as its piece tells: a piece may be older than this run of the program, which then has not heard of
// the clip.
export function clipOfPiece(piece: Piece): Clip {
  return {
    id: piece.clip,
    name: piece.name,
    owned: false,
    attributes: {},
    rate: '',
    rateFraction: piece.rate,
    hasThumbnail: false,
    hasPreview: true,
    audioChannels: 0,
    edit: piece.edit,
    state: piece.state,
  };
}
