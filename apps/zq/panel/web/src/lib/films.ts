// True for the address of full media, false for that of a preview.
export function isMediaAddress(address: string): boolean {
  return /^\/api\/repositories\/[^/?]+\/clips\/[^/?]+\/media$/.test(address);
}

// Full media whose sound alone the browser knows would play without a picture.
export function lacksPicture(address: string, video: { videoWidth: number }): boolean {
  return isMediaAddress(address) && video.videoWidth === 0;
}
