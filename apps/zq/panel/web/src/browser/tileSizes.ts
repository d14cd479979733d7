// Least and greatest wanted width of a tile, in pixels.
export const smallestTile = 110;
export const largestTile = 420;
