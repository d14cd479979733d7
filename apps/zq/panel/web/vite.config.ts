import { svelte } from '@sveltejs/vite-plugin-svelte';
import { defineConfig } from 'vite';

// The build of the program says where the page goes; by hand it goes where the dev preset looks for it.
const outDir = process.env['ZQ_PANEL_OUT'] ?? '../../../../build/dev/panel';

export default defineConfig({
  plugins: [svelte()],
  base: '/',
  build: {
    outDir,
    emptyOutDir: true,
    // Docked web views are often a few years behind the browsers.
    target: ['es2021', 'chrome100'],
    // The page's content security policy has no data: addresses and no inline code.
    assetsInlineLimit: 0,
    modulePreload: { polyfill: false },
    reportCompressedSize: false,
  },
});
