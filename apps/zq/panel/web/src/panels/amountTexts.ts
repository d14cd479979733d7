// Bytes and waits in the page's language.
import { currentLanguage } from '../i18n/texts.svelte.ts';
import { bytesText, waitText } from '../lib/amounts.ts';

// The pseudo-language of the tests is none that the browser knows.
const language = (): string => (currentLanguage().startsWith('qps') ? 'en' : currentLanguage());

export const bytes = (count: number): string => bytesText(count, language());
export const wait = (seconds: number): string => waitText(seconds, language());
