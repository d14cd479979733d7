import { mount } from 'svelte';
import App from './App.svelte';
import './styles/tokens.css';
import './styles/base.css';
import './styles/controls.css';
import { takePageKey } from './api/pageKey.ts';
import { app } from './state/app.svelte.ts';

takePageKey();

const target = document.getElementById('panel');
if (target !== null) {
  mount(App, { target });
  void app.start();
}
